#include "RecordedObject.h"

#include "Text.h"
#include "Times.h"

#include "asn1/BerHeader.h"
#include "platform/retrieval/Digest.h"
#include "values/CompareTimes.h"
#include "values/Exceptions.h"

#include <optional>

namespace norvane {
namespace {

/// A copy and a digest of what is larger take longer than many a decision.
constexpr std::size_t small_object_octets = 4U << 20;
constexpr std::size_t kept_of_large_octets = 64;

constexpr std::uint8_t tag_integer = 0x02;
constexpr std::uint8_t tag_utc_time = 0x17;
constexpr std::uint8_t tag_generalized_time = 0x18;
constexpr std::uint8_t tag_version = 0xA0;

/// The elements of a constructed one, one after the other.
class Elements {
  public:
    explicit Elements(ByteView content) : rest_(content) {}

    /// An element with its header; nothing at the end, or if what follows is none.
    std::optional<BerHeader> next() {
        BerHeader header;
        ASN1Failure failure;
        if (rest_.empty() || !read_ber_header(rest_, rest_.begin(), rest_.end(), header, failure) ||
            header.indefinite) {
            return std::nullopt;
        }
        whole_ = {rest_.data,
                  static_cast<std::uint32_t>(header.content - rest_.data) + header.length};
        rest_ = {whole_.end(), rest_.length - whole_.length};
        return header;
    }

    /// The same unless the next element has another tag.
    std::optional<BerHeader> next_if(std::uint8_t tag) {
        return !rest_.empty() && *rest_.data == tag ? next() : std::nullopt;
    }

    /// The last element, with its header.
    [[nodiscard]] ByteView whole() const { return whole_; }

  private:
    ByteView rest_;
    ByteView whole_;
};

ByteView content_of(const BerHeader& header) { return {header.content, header.length}; }

std::string name_of(ByteView name) {
    return name_text({name.length, const_cast<BYTE*>(name.data)});
}

std::string time_of(Elements& elements) {
    auto header = elements.next_if(tag_utc_time);
    int kind = ASN1T_Time::utcTime_chosen;
    if (!header) {
        header = elements.next_if(tag_generalized_time);
        kind = ASN1T_Time::generalTime_chosen;
    }
    if (!header) {
        return {};
    }
    try {
        const ByteView text = content_of(*header);
        return time_text(to_file_time(
            date_from_asn1_time({reinterpret_cast<const char*>(text.data), text.length}, kind)));
    } catch (const CAException&) {
        return "not a time";
    }
}

void read_crl(Elements elements, RecordedObject& object) {
    elements.next_if(tag_integer);
    elements.next();
    if (elements.next()) {
        object.name = name_of(elements.whole());
        object.from = time_of(elements);
        object.until = time_of(elements);
    }
}

void read_certificate(Elements elements, RecordedObject& object) {
    elements.next_if(tag_version);
    if (const auto serial = elements.next_if(tag_integer)) {
        object.serial = "0x" + hexadecimal_text(serial->content, serial->length);
    }
    elements.next();
    if (elements.next()) {
        object.issuer = name_of(elements.whole());
    }
    if (const auto validity = elements.next()) {
        Elements times(content_of(*validity));
        object.from = time_of(times);
        object.until = time_of(times);
    }
    if (elements.next()) {
        object.name = name_of(elements.whole());
    }
}

} // namespace

RecordedObject make_recorded_object(const NORVANE_RECORD_OBJECT& object, Keeping keeping) {
    RecordedObject made;
    made.is_crl = object.dwKind == NORVANE_RECORD_CRL;
    made.size = object.cbEncoded;
    Elements outermost({object.pbEncoded, object.cbEncoded});
    if (const auto all = outermost.next()) {
        Elements parts(content_of(*all));
        if (const auto to_be_signed = parts.next()) {
            const Elements fields(content_of(*to_be_signed));
            made.is_crl ? read_crl(fields, made) : read_certificate(fields, made);
        }
    }
    const auto* const octets = reinterpret_cast<const char*>(object.pbEncoded);
    if (keeping == Keeping::all_objects || made.size <= small_object_octets) {
        made.encoded.assign(octets, made.size);
    } else {
        made.encoded.assign(octets + made.size - kept_of_large_octets, kept_of_large_octets);
    }
    return made;
}

std::string sha256_of(const RecordedObject& object) {
    return object.encoded.size() == object.size ? to_hex(Digester().add(object.encoded).finish())
                                                : "";
}

bool is_same(const RecordedObject& object, const NORVANE_RECORD_OBJECT& other) {
    const std::string_view octets(reinterpret_cast<const char*>(other.pbEncoded), other.cbEncoded);
    return object.size == octets.size() && octets.ends_with(object.encoded);
}

} // namespace norvane
