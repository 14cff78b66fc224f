#include "asn1/BerHeader.h"

#include <cstddef>
#include <string>
#include <utility>

namespace norvane {
namespace {

constexpr std::uint8_t more_octets_bit = 0x80;
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
        if ((first & tag_number_mask) == high_tag_number) {
            while (at_ != end_ && at_ - start < max_tag_octets && (*at_ & more_octets_bit) != 0) {
                ++at_;
            }
            at_ += at_ == end_ ? 0 : 1;
        }
        header.tag = {start, static_cast<std::uint32_t>(at_ - start)};
        return true;
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
        if (length > more_octets_bit) {
            const auto count = static_cast<std::ptrdiff_t>(length) - more_octets_bit;
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
                        "a greater length");
        }
        header.length = static_cast<std::uint32_t>(length);
        return true;
    }

    bool fail(ASN1Status status, const std::uint8_t* at, std::string expected, std::string found) {
        failure_ = {.status = status,
                    .element = "BER element",
                    .offset = static_cast<std::uint32_t>(at - input_.begin()),
                    .expected = std::move(expected),
                    .found = std::move(found)};
        return false;
    }

    ByteView input_;
    const std::uint8_t* at_;
    const std::uint8_t* end_;
    ASN1Failure& failure_;
};

} // namespace

bool read_ber_header(ByteView input, const std::uint8_t* at, const std::uint8_t* end,
                     BerHeader& header, ASN1Failure& failure) {
    return HeaderReader(input, at, end, failure).read(header);
}

} // namespace norvane
