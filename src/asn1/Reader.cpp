#include "asn1/Reader.h"

#include <array>
#include <cstring>
#include <limits>
#include <utility>

namespace norvane {
namespace {

constexpr std::uint8_t long_length_bit = 0x80;
constexpr std::uint8_t indefinite_length = 0x80;
constexpr std::uint8_t reserved_length = 0xff; // X.690 8.1.3.5 c
constexpr std::uint8_t high_tag_number = 0x1f;
constexpr unsigned max_tag_octets = 5;
constexpr std::uint8_t most_unused_bits = 7;

std::string octets(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " octet" : " octets");
}

} // namespace

void Reader::fail(ASN1Status status, const char* element, const std::uint8_t* at,
                  std::string expected, std::string found) {
    next_ = end_;
    if (attempt_.failed()) {
        return;
    }
    attempt_.status = status;
    if (attempt_.report == DecodeReport::silent) {
        return;
    }
    rtErrSetData(attempt_.ctxt, {.status = status,
                                 .element = path(element),
                                 .offset = static_cast<std::uint32_t>(at - attempt_.input.begin()),
                                 .expected = std::move(expected),
                                 .found = std::move(found)});
}

void Reader::unexpected(const char* element, std::string expected) {
    if (at_end()) {
        fail(ASN1Status::unexpected_end, element, next_, std::move(expected),
             "the end of the data");
    } else {
        fail(ASN1Status::unexpected_tag, element, next_, std::move(expected), tag_name(next_tag()));
    }
}

void Reader::finish() {
    if (!at_end()) {
        fail(ASN1Status::trailing_bytes, parent_ == nullptr ? "input" : nullptr, next_, "its end",
             octets(static_cast<std::size_t>(end_ - next_)) + " more");
    }
}

unsigned Reader::depth() const {
    unsigned depth = 0;
    for (const Reader* reader = parent_; reader != nullptr; reader = reader->parent_) {
        ++depth;
    }
    return depth;
}

std::string Reader::path(const char* element) const {
    std::string path = parent_ == nullptr ? "" : parent_->path(element_);
    if (element != nullptr) {
        path += path.empty() ? "" : ".";
        path += element;
    }
    return path;
}

bool Reader::read_length(const std::uint8_t*& at, const std::uint8_t* end, const char* element,
                         std::uint32_t& length) {
    const auto not_minimal = [this] {
        next_ = end_;
        if (!attempt_.failed()) {
            attempt_.status = ASN1Status::bad_length;
            attempt_.lengths_not_minimal = true;
        }
        return false;
    };
    const std::uint8_t* const start = at;
    if (at == end) {
        fail(ASN1Status::unexpected_end, element, at, "a length", "the end of the data");
        return false;
    }
    length = *at++;
    if ((length & long_length_bit) == 0) {
        return true;
    }
    if (length == indefinite_length) {
        return not_minimal();
    }
    const std::uint32_t count = length & ~std::uint32_t{long_length_bit};
    if (length == reserved_length || count > static_cast<std::size_t>(end - at)) {
        fail(ASN1Status::bad_length, element, start, "a length",
             length == reserved_length ? "the reserved octet 0xff" : "the end of the data");
        return false;
    }
    if (*at == 0) {
        return not_minimal();
    }
    if (count > sizeof length) {
        fail(ASN1Status::bad_length, element, start, "a length that fits the data",
             "a length of " + octets(count));
        return false;
    }
    length = 0;
    for (const std::uint8_t* const last = at + count; at != last; ++at) {
        length = length << 8 | *at;
    }
    return (length & ~std::uint32_t{largest_short_length}) != 0 || not_minimal();
}

bool Reader::read_header(const std::uint8_t*& at, const std::uint8_t* end, const char* element,
                         std::uint32_t& length) {
    const std::uint8_t* const start = at;
    if (at == end) {
        fail(ASN1Status::unexpected_end, element, at, "an element", "the end of the data");
        return false;
    }
    const std::uint8_t tag = *at++;
    if (tag == 0) {
        fail(ASN1Status::unexpected_tag, element, start, "an element",
             "end-of-contents octets without an indefinite length");
        return false;
    }
    if ((tag & tag_number_mask) == high_tag_number) {
        const bool padded = at != end && *at == long_length_bit;
        while (at != end && at - start < max_tag_octets && (*at & long_length_bit) != 0) {
            ++at;
        }
        if (padded || at == end || (*at & long_length_bit) != 0 ||
            (at - start == 1 && *at < high_tag_number)) {
            fail(ASN1Status::unexpected_tag, element, start, "a tag number in its shortest form",
                 "one that is padded, cut off or too long");
            return false;
        }
        ++at;
    }
    if (!read_length(at, end, element, length)) {
        return false;
    }
    if (length > static_cast<std::size_t>(end - at)) {
        fail(ASN1Status::bad_length, element, start,
             "at most " + octets(static_cast<std::size_t>(end - at)) + " of content",
             "a length of " + octets(length));
        return false;
    }
    return true;
}

ByteView Reader::content_in_full(Tag tag, const char* element) {
    if (!next_is(tag)) {
        if (attempt_.failed()) {
            next_ = end_; // Somebody else's failure; a loop over the elements ends with it.
        } else {
            unexpected(element, tag_name(tag));
        }
        return {};
    }
    const std::uint8_t* at = next_;
    std::uint32_t length = 0;
    if (!read_header(at, end_, element, length)) {
        return {};
    }
    next_ = at + length;
    return {at, length};
}

ByteView Reader::any(const char* element) {
    const std::uint8_t* const start = next_;
    const std::uint8_t* at = next_;
    const std::uint8_t* end = end_;
    std::array<const std::uint8_t*, max_nesting> outer_ends{};
    const unsigned outer_depth = depth();
    unsigned open = 0;
    do {
        const std::uint8_t* const header = at;
        std::uint32_t length = 0;
        if (!read_header(at, end, element, length)) {
            return {};
        }
        if ((*header & constructed_bit) == 0) {
            at += length;
        } else if (outer_depth + open >= max_nesting) {
            fail(ASN1Status::nested_too_deeply, element, header,
                 "at most " + std::to_string(max_nesting) + " levels of nesting", "more");
            return {};
        } else {
            outer_ends[open++] = end;
            end = at + length;
        }
        while (open != 0 && at == end) {
            end = outer_ends[--open];
        }
    } while (open != 0);
    next_ = at;
    return span(start, at);
}

ByteView Reader::string(Tag tag, const char* element) {
    if (!next_is(constructed(tag))) {
        return content(tag, element);
    }
    // Segments of every string type but BIT STRING are tagged as OCTET STRING (X.690 8.23.6).
    const Joined joined = join_segments(tag, Tag::octet_string, element);
    return {joined.octets, joined.length};
}

ASN1TBitStr Reader::bit_string(Tag tag, const char* element) {
    if (next_is(constructed(tag))) {
        const Joined joined = join_segments(tag, Tag::bit_string, element);
        return {joined.length * 8 - joined.unused_bits, joined.octets};
    }
    const std::uint8_t* const start = next_;
    const ByteView octets = content(tag, element);
    std::uint8_t unused = 0;
    if (attempt_.failed() || !check_bit_string(octets, start, element, unused)) {
        return {};
    }
    return {(octets.length - 1) * 8 - unused, octets.data + 1};
}

bool Reader::check_bit_string(ByteView octets, const std::uint8_t* at, const char* element,
                              std::uint8_t& unused_bits) {
    if (octets.empty() || octets.data[0] > most_unused_bits ||
        (octets.length == 1 && octets.data[0] != 0) ||
        octets.length > std::numeric_limits<std::uint32_t>::max() / 8) {
        fail(ASN1Status::bad_value, element, at,
             "a BIT STRING that begins with its count of unused bits",
             octets.empty() ? "no content"
                            : "the count " + std::to_string(octets.data[0]) + " before " +
                                  norvane::octets(octets.length - 1));
        return false;
    }
    unused_bits = octets.data[0];
    return true;
}

Reader::Joined Reader::join_segments(Tag tag, Tag segment, const char* element) {
    Reader segments = enter(constructed(tag), element);
    Joined joined{static_cast<std::uint8_t*>(memory().allocate(segments.rest().length)), 0, 0};
    segments.append_segments(segment, element, joined);
    next_ = attempt_.failed() ? end_ : next_;
    return attempt_.failed() ? Joined{} : joined;
}

void Reader::append_segments(Tag segment, const char* element, Joined& joined) {
    while (!at_end()) {
        if (next_is(constructed(segment))) {
            if (depth() >= max_nesting) {
                fail(ASN1Status::nested_too_deeply, element, next_,
                     "at most " + std::to_string(max_nesting) + " levels of nesting", "more");
                return;
            }
            enter(constructed(segment), nullptr).append_segments(segment, element, joined);
            continue;
        }
        const std::uint8_t* const start = next_;
        ByteView octets = content(segment, element);
        if (attempt_.failed()) {
            return;
        }
        if (segment == Tag::bit_string) {
            if (joined.unused_bits != 0) {
                fail(ASN1Status::bad_value, element, start, "unused bits in the last segment alone",
                     "a segment behind some");
                return;
            }
            if (!check_bit_string(octets, start, element, joined.unused_bits)) {
                return;
            }
            octets = {octets.data + 1, octets.length - 1};
        }
        if (!octets.empty()) {
            std::memcpy(joined.octets + joined.length, octets.data, octets.length);
            joined.length += octets.length;
        }
    }
}

bool Reader::boolean(Tag tag, const char* element) {
    const std::uint8_t* const start = next_;
    const ByteView octets = content(tag, element);
    if (octets.length != 1) {
        fail(ASN1Status::bad_value, element, start, "a BOOLEAN of one octet",
             norvane::octets(octets.length));
        return false;
    }
    return octets.data[0] != 0;
}

ASN1TInteger Reader::integer(Tag tag, const char* element) {
    const std::uint8_t* const start = next_;
    const ByteView octets = content(tag, element);
    if (octets.empty()) {
        fail(ASN1Status::bad_value, element, start, "at least one octet", "no content");
    }
    return ASN1TInteger(octets);
}

std::int32_t Reader::int32(Tag tag, const char* element) {
    const std::uint8_t* const start = next_;
    const std::optional<std::int32_t> value = integer(tag, element).to_int32();
    if (!value) {
        fail(ASN1Status::bad_value, element, start, "a number of 32 bits", "a longer one");
    }
    return value.value_or(0);
}

ASN1TObjId Reader::object_identifier(Tag tag, const char* element) {
    const std::uint8_t* const start = next_;
    const ByteView octets = content(tag, element);
    if (!ASN1TObjId::well_formed(octets)) {
        fail(ASN1Status::bad_value, element, start, "arcs in their shortest form",
             octets.empty() ? "no content" : "an arc that is padded or cut off");
        return {};
    }
    return ASN1TObjId(octets);
}

} // namespace norvane
