#include "asn1/RevokedCertificates.h"

#include "asn1/Decode.h"
#include "asn1/Tag.h"

#include <array>
#include <cstring>

namespace norvane {
namespace {

// ---- The structural pass ----

/// An entry with this many octets before it from the end of the list cannot be read past the end
/// by skip_plain_entry, whatever its octets are.
constexpr std::ptrdiff_t plain_entry_room = 160;

/// Steps over an entry of the shape that nearly every entry of every CRL has, all lengths in one
/// octet: serial number, UTCTime with seconds, and no extension or the reason code alone. Gives
/// null for any other shape, which says nothing about whether it is well formed.
const std::uint8_t* skip_plain_entry(const std::uint8_t* at) {
    constexpr std::array<std::uint8_t, 13> reason_code{0x30, 0x0c, 0x30, 0x0a, 0x06, 0x03, 0x55,
                                                       0x1d, 0x15, 0x04, 0x03, 0x0a, 0x01};
    constexpr unsigned longest = 0x7f;
    constexpr std::uint8_t time_length = 13;

    const unsigned serial_length = at[3];
    if (at[0] != octet(Tag::sequence) || at[1] > longest || at[2] != octet(Tag::integer) ||
        serial_length == 0 || serial_length > longest) {
        return nullptr;
    }
    const std::uint8_t* const end = at + 2 + at[1];
    const std::uint8_t* const time = at + 4 + serial_length;
    if (time[0] != octet(Tag::utc_time) || time[1] != time_length) {
        return nullptr;
    }
    const std::uint8_t* const extensions = time + 2 + time_length;
    const bool no_extension = extensions == end;
    const bool reason_only = extensions + reason_code.size() + 1 == end &&
                             std::memcmp(extensions, reason_code.data(), reason_code.size()) == 0;
    return no_extension || reason_only ? end : nullptr;
}

/// Checks entries of any shape and keeps what their segmented strings come to.
class EntryChecker {
  public:
    void check(Reader& entries) {
        Reader entry = entries.enter(Tag::sequence, "revokedCertificate");
        static_cast<void>(entry.integer(Tag::integer, "userCertificate"));
        keep_if_joined(entry, [&] {
            ASN1T_Time date;
            decode(entry, date, "revocationDate");
            return ByteView{reinterpret_cast<const std::uint8_t*>(date.text.data()),
                            static_cast<std::uint32_t>(date.text.size())};
        });
        if (!entry.at_end()) {
            Reader extensions = entry.enter(Tag::sequence, "crlEntryExtensions");
            while (!extensions.at_end()) {
                check_extension(extensions);
            }
        }
        entry.finish();
    }

    [[nodiscard]] const JoinedString* joined() const { return first_; }

  private:
    void check_extension(Reader& extensions) {
        Reader fields = extensions.enter(Tag::sequence, "Extension");
        static_cast<void>(fields.object_identifier(Tag::object_identifier, "extnID"));
        if (fields.next_is(Tag::boolean)) {
            static_cast<void>(fields.boolean(Tag::boolean, "critical"));
        }
        keep_if_joined(fields, [&] { return fields.string(Tag::octet_string, "extnValue"); });
        fields.finish();
    }

    template <class ReadString>
    void keep_if_joined(Reader& in, ReadString read_string) {
        const std::uint8_t* const place = in.position();
        const bool segmented = is_constructed(in.next_tag());
        const ByteView octets = read_string();
        if (segmented && !in.attempt().failed()) {
            auto* const kept = in.memory().make<JoinedString>(place, octets, nullptr);
            (first_ == nullptr ? first_ : last_->next) = kept;
            last_ = kept;
        }
    }

    const JoinedString* first_ = nullptr;
    JoinedString* last_ = nullptr;
};

// ---- The walk over what the pass has proved ----

/// An element with a definite, minimal length that lies wholly in the data.
struct ProvenElement {
    const std::uint8_t* place = nullptr;
    ByteView content;

    [[nodiscard]] Tag tag() const { return static_cast<Tag>(*place); }
};

ProvenElement element_at(const std::uint8_t* place) {
    const std::uint8_t* at = place + 1;
    std::uint32_t length = *at++;
    if (length > 0x7f) {
        const std::uint8_t* const last = at + (length & 0x7fU);
        for (length = 0; at != last; ++at) {
            length = length << 8 | *at;
        }
    }
    return {place, {at, length}};
}

/// The first of the joined strings at `place` or behind it. Walks keep theirs abreast, so that the
/// list is gone through once and not anew for every string.
const JoinedString* joined_from(const JoinedString* joined, const std::uint8_t* place) {
    while (joined != nullptr && joined->place < place) {
        joined = joined->next;
    }
    return joined;
}

ByteView string_octets(const ProvenElement& element, const JoinedString* joined) {
    return is_constructed(element.tag()) ? joined_from(joined, element.place)->octets
                                         : element.content;
}

constexpr std::array<std::uint8_t, 3> reason_code_oid{0x55, 0x1d, 21};

} // namespace

void decode(Reader& in, ASN1T_RevokedCertificates& out) {
    Reader entries = in.enter(Tag::sequence, "revokedCertificates");
    out.content_ = entries.rest();
    EntryChecker checker;
    while (!entries.at_end()) {
        const ByteView rest = entries.rest();
        const std::uint8_t* at = rest.begin();
        while (rest.end() - at >= plain_entry_room) {
            const std::uint8_t* const next = skip_plain_entry(at);
            if (next == nullptr) {
                break;
            }
            at = next;
            ++out.count;
        }
        entries.skip_to(at);
        checker.check(entries);
        ++out.count;
    }
    out.joined_ = checker.joined();
}

ASN1T_RevokedCertificates::iterator& ASN1T_RevokedCertificates::iterator::operator++() {
    place_ = next_;
    if (place_ == end_) {
        return *this;
    }
    joined_ = joined_from(joined_, place_);
    const ByteView fields = element_at(place_).content;
    next_ = fields.end();

    const ProvenElement serial = element_at(fields.begin());
    entry_.userCertificate = ASN1TInteger(serial.content);

    const ProvenElement date = element_at(serial.content.end());
    const ByteView text = string_octets(date, joined_);
    const bool utc = (octet(date.tag()) & tag_number_mask) == octet(Tag::utc_time);
    entry_.revocationDate = {utc ? ASN1T_Time::utcTime_chosen : ASN1T_Time::generalTime_chosen,
                             {reinterpret_cast<const char*>(text.data), text.length}};

    const bool has_extensions = date.content.end() != fields.end();
    entry_.m.crlEntryExtensionsPresent = has_extensions ? 1 : 0;
    entry_.crlEntryExtensions =
        has_extensions ? ASN1T_EntryExtensions(element_at(date.content.end()).content, joined_)
                       : ASN1T_EntryExtensions();
    return *this;
}

ASN1T_RevokedCertificates::Extent ASN1T_RevokedCertificates::extent_at(const std::uint8_t* place) {
    const ByteView fields = element_at(place).content;
    return {element_at(fields.begin()).content, fields.end()};
}

ASN1T_EntryExtensions::iterator& ASN1T_EntryExtensions::iterator::operator++() {
    place_ = element_at(place_).content.end();
    joined_ = joined_from(joined_, place_);
    return *this;
}

ASN1T_Extension ASN1T_EntryExtensions::iterator::operator*() const {
    ASN1T_Extension extension;
    ProvenElement field = element_at(element_at(place_).content.begin());
    extension.extnID = ASN1TObjId(field.content);
    field = element_at(field.content.end());
    if (field.tag() == Tag::boolean) {
        extension.critical = *field.content.data != 0;
        field = element_at(field.content.end());
    }
    extension.extnValue = string_octets(field, joined_);
    if (extension.extnID.content() == ByteView{reason_code_oid.data(), reason_code_oid.size()}) {
        ASN1CTXT scratch;
        ASN1T_CRLReason reason;
        if (decode_element(scratch, extension.extnValue, reason, DecodeReport::silent) ==
            code(ASN1Status::ok)) {
            extension.value = reason;
        }
    }
    return extension;
}

} // namespace norvane
