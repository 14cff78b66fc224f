#include "asn1/BerHeader.h"

#include <cstddef>
#include <string>
#include <utility>

namespace norvane {
namespace {

constexpr std::uint8_t more_octets_bit = 0x80;
constexpr std::uint8_t long_length_bit = 0x80;
constexpr std::uint8_t indefinite_length = 0x80;
constexpr std::uint8_t reserved_length = 0xff; // X.690 8.1.3.5 c
constexpr std::uint8_t high_tag_number = 0x1f;
constexpr std::ptrdiff_t max_tag_octets = 5;

class HeaderReader {
  public:
    HeaderReader(ByteView input, const std::uint8_t* at, const std::uint8_t* end,
                 ASN1Failure& failure)
        : input_(input), at_(at), end_(end), failure_(failure) {}

    bool read(BerHeader& header) {
        if (!read_tag(header) || !read_length(header)) {
            return false;
        }
        header.content = at_;
        return true;
    }

  private:
    bool read_tag(BerHeader& header) {
        const std::uint8_t* const start = at_;
        if (at_ == end_) {
            return fail(ASN1Status::unexpected_end, at_, "an element", "the end of the data");
        }
        const std::uint8_t first = *at_++;
        if (first == 0) {
            return fail(ASN1Status::unexpected_tag, start, "an element",
                        "end-of-contents octets without an indefinite length");
        }
        if ((first & tag_number_mask) == high_tag_number && !read_high_tag_number(start)) {
            return false;
        }
        header.tag = {start, static_cast<std::uint32_t>(at_ - start)};
        return true;
    }

    /// The octets of a tag number from 31 up, in as few as it needs (X.690 8.1.2.4).
    bool read_high_tag_number(const std::uint8_t* start) {
        const std::uint8_t* const number = at_;
        while (at_ != end_ && at_ - start < max_tag_octets && (*at_ & more_octets_bit) != 0) {
            ++at_;
        }
        if (at_ == end_) {
            return fail(ASN1Status::unexpected_end, at_, "a tag number", "the end of the data");
        }
        const bool padded = *number == more_octets_bit;
        const bool too_long = (*at_ & more_octets_bit) != 0;
        const bool has_short_form = at_ == number && *at_ < high_tag_number;
        ++at_;
        return (!padded && !too_long && !has_short_form) ||
               fail(ASN1Status::unexpected_tag, start, "a tag number in its shortest form",
                    too_long ? "one of too many octets" : "a longer form");
    }

    bool read_length(BerHeader& header) {
        const std::uint8_t* const start = at_;
        if (at_ == end_) {
            return fail(ASN1Status::unexpected_end, at_, "a length", "the end of the data");
        }
        std::uint64_t length = *at_++;
        if (length == indefinite_length) {
            header.indefinite = true;
            return header.constructed() || fail(ASN1Status::bad_length, start, "a definite length",
                                                "an indefinite one on a primitive element");
        }
        if (length > long_length_bit) {
            const auto count = static_cast<std::ptrdiff_t>(length) - long_length_bit;
            if (length == reserved_length || count > end_ - at_) {
                return fail(ASN1Status::bad_length, start, "a length",
                            length == reserved_length ? "the reserved octet 0xff"
                                                      : "the end of the data");
            }
            length = 0;
            for (const std::uint8_t* const last = at_ + count; at_ != last; ++at_) {
                // One above 32 bits stays so, whatever follows.
                length = (length >> 32 != 0 ? length : length << 8) | *at_;
            }
        }
        if (length > static_cast<std::uint64_t>(end_ - at_)) {
            return fail(ASN1Status::bad_length, start,
                        std::to_string(end_ - at_) + " octets of content at most",
                        length >> 32 != 0 ? "a length beyond 32 bits"
                                          : "a length of " + std::to_string(length));
        }
        header.length = static_cast<std::uint32_t>(length);
        return true;
    }

    bool fail(ASN1Status status, const std::uint8_t* at, std::string expected, std::string found) {
        failure_ = ber_failure(status, input_, at, std::move(expected), std::move(found));
        return false;
    }

    ByteView input_;
    const std::uint8_t* at_;
    const std::uint8_t* end_;
    ASN1Failure& failure_;
};

} // namespace

ASN1Failure ber_failure(ASN1Status status, ByteView input, const std::uint8_t* at,
                        std::string expected, std::string found) {
    return {.status = status,
            .element = "BER element",
            .offset = static_cast<std::uint32_t>(at - input.begin()),
            .expected = std::move(expected),
            .found = std::move(found)};
}

bool read_ber_header(ByteView input, const std::uint8_t* at, const std::uint8_t* end,
                     BerHeader& header, ASN1Failure& failure) {
    return HeaderReader(input, at, end, failure).read(header);
}

std::uint8_t* write_length(std::uint8_t* out, std::uint32_t length) {
    const std::uint32_t octets = length_octets(length);
    if (octets > 1) {
        *out++ = static_cast<std::uint8_t>(long_length_bit | (octets - 1));
    }
    for (std::uint32_t i = octets > 1 ? octets - 1 : 1; i != 0; --i) {
        *out++ = static_cast<std::uint8_t>(length >> 8 * (i - 1));
    }
    return out;
}

} // namespace norvane
