#include "asn1/Reader.h"

#include "asn1/BerHeader.h"

#include <array>
#include <cstring>
#include <limits>
#include <utility>

namespace norvane {
namespace {

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

bool Reader::read_header(const std::uint8_t*& at, const std::uint8_t* end, const char* element,
                         std::uint32_t& length) {
    BerHeader header;
    ASN1Failure failure;
    if (!read_ber_header(attempt_.input, at, end, header, failure)) {
        fail(failure.status, element, attempt_.input.begin() + failure.offset,
             std::move(failure.expected), std::move(failure.found));
        return false;
    }
    if (!header.minimal()) {
        next_ = end_;
        if (!attempt_.failed()) {
            attempt_.status = ASN1Status::bad_length;
            attempt_.lengths_not_minimal = true;
        }
        return false;
    }
    at = header.content;
    length = header.length;
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
    segments.append_segments(segment, joined);
    next_ = attempt_.failed() ? end_ : next_;
    return attempt_.failed() ? Joined{} : joined;
}

void Reader::append_segments(Tag segment, Joined& joined) {
    while (!at_end()) {
        if (next_is(constructed(segment))) {
            if (depth() >= max_nesting) {
                fail(ASN1Status::nested_too_deeply, nullptr, next_,
                     "at most " + std::to_string(max_nesting) + " levels of nesting", "more");
                return;
            }
            enter(constructed(segment), nullptr).append_segments(segment, joined);
            continue;
        }
        const std::uint8_t* const start = next_;
        ByteView octets = content(segment, nullptr);
        if (attempt_.failed()) {
            return;
        }
        if (segment == Tag::bit_string) {
            if (joined.unused_bits != 0) {
                fail(ASN1Status::bad_value, nullptr, start, "unused bits in the last segment alone",
                     "a segment behind some");
                return;
            }
            if (!check_bit_string(octets, start, nullptr, joined.unused_bits)) {
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
