#pragma once

#include "asn1/ASN1Context.h"
#include "asn1/BitString.h"
#include "asn1/ByteView.h"
#include "asn1/Integer.h"
#include "asn1/ObjectIdentifier.h"
#include "asn1/Tag.h"

#include <cstdint>
#include <string>

namespace norvane {

/// Elements nested deeper than this, counted from the outermost one, are refused. The structures
/// of X.509 need about a dozen levels; the rest is room for unusual attribute values.
inline constexpr unsigned max_nesting = 64;

/// Longer input is refused, so that every length fits an int, also where definite lengths take a
/// few octets more than indefinite ones did.
inline constexpr std::uint32_t max_input_length = 0x7f000000;

/// Whether a failed attempt describes itself in its context.
enum class DecodeReport : std::uint8_t { failure, silent };

/// One attempt to decode one run of bytes.
struct DecodeAttempt {
    ASN1CTXT& ctxt;
    ByteView input;
    DecodeReport report = DecodeReport::failure;
    ASN1Status status = ASN1Status::ok;
    /// The attempt ended because a length is indefinite or longer than it has to be. The same
    /// bytes with minimal lengths may decode.
    bool lengths_not_minimal = false;

    [[nodiscard]] bool failed() const { return status != ASN1Status::ok; }
};

/// Reads the elements inside one constructed element, or the outermost bytes, one after the other.
/// All lengths must be definite and minimal, as in DER; see MinimalLengths.h for the rest of BER.
///
/// The first failure is recorded in the attempt's context. From then on the reader has nothing
/// left and its results are empty, so that decoders read as a list of fields and loops end; the
/// attempt's `failed` says at the end whether the results mean anything.
///
/// Every result is a view of the input, but for a string that comes in segments (X.690 8.7.3):
/// that one is put together in the memory of the context.
class Reader {
  public:
    Reader(DecodeAttempt& attempt, ByteView bytes, const char* element)
        : Reader(attempt, nullptr, bytes, element) {}

    [[nodiscard]] bool at_end() const { return next_ == end_; }
    [[nodiscard]] bool next_is(Tag tag) const { return next_ != end_ && *next_ == octet(tag); }
    /// Whether the next element is a string with this tag, in one piece or in segments.
    [[nodiscard]] bool next_is_string(Tag tag) const {
        return next_is(tag) || next_is(constructed(tag));
    }
    [[nodiscard]] Tag next_tag() const { return at_end() ? Tag{} : static_cast<Tag>(*next_); }
    [[nodiscard]] const std::uint8_t* position() const { return next_; }
    [[nodiscard]] ByteView rest() const { return span(next_, end_); }
    /// The bytes read since `start`, an earlier position().
    [[nodiscard]] ByteView since(const std::uint8_t* start) const { return span(start, next_); }
    [[nodiscard]] Arena& memory() const { return attempt_.ctxt.memory; }
    [[nodiscard]] DecodeAttempt& attempt() const { return attempt_; }

    /// Steps over the next element, which must have this tag, and gives a reader of its content.
    /// This reader must outlive it.
    [[nodiscard]] Reader enter(Tag tag, const char* element) {
        return {attempt_, this, content(tag, element), element};
    }

    /// The content octets of the next element, which must have this tag.
    ByteView content(Tag tag, const char* element) {
        const auto room = end_ - next_;
        if (room >= 2 && next_[0] == octet(tag) && next_[1] <= largest_short_length &&
            next_[1] <= room - 2) [[likely]] {
            const ByteView result{next_ + 2, next_[1]};
            next_ = result.end();
            return result;
        }
        return content_in_full(tag, element);
    }

    /// The next element whatever it is, header and all. What is nested in it is proved to be well
    /// formed; the context-free part of a value whose type is not known.
    ByteView any(const char* element);

    /// The octets of a string with this tag, which may come in segments.
    [[nodiscard]] ByteView string(Tag tag, const char* element);
    [[nodiscard]] ASN1TBitStr bit_string(Tag tag, const char* element);

    [[nodiscard]] bool boolean(Tag tag, const char* element);
    [[nodiscard]] ASN1TInteger integer(Tag tag, const char* element);
    /// An INTEGER or ENUMERATED that fits 32 bits.
    [[nodiscard]] std::int32_t int32(Tag tag, const char* element);
    [[nodiscard]] ASN1TObjId object_identifier(Tag tag, const char* element);

    /// Goes on at `place`, which lies in rest() and is known to begin an element or to be the end.
    void skip_to(const std::uint8_t* place) { next_ = place; }

    /// Requires that nothing is left.
    void finish();

    /// Records a failure at `at`, unless there is one already, and leaves nothing to read.
    void fail(ASN1Status status, const char* element, const std::uint8_t* at, std::string expected,
              std::string found);

    /// Records that the next element is none of those expected.
    void unexpected(const char* element, std::string expected);

  private:
    static constexpr std::uint8_t largest_short_length = 0x7f;

    Reader(DecodeAttempt& attempt, const Reader* parent, ByteView bytes, const char* element)
        : next_(bytes.begin()), end_(bytes.end()), attempt_(attempt), parent_(parent),
          element_(element) {}

    static ByteView span(const std::uint8_t* first, const std::uint8_t* last) {
        return {first, static_cast<std::uint32_t>(last - first)};
    }

    /// A string put together from its segments.
    struct Joined {
        std::uint8_t* octets = nullptr;
        std::uint32_t length = 0;
        std::uint8_t unused_bits = 0;
    };

    ByteView content_in_full(Tag tag, const char* element);
    bool read_header(const std::uint8_t*& at, const std::uint8_t* end, const char* element,
                     std::uint32_t& length);
    bool check_bit_string(ByteView octets, const std::uint8_t* at, const char* element,
                          std::uint8_t& unused_bits);
    [[nodiscard]] Joined join_segments(Tag tag, Tag segment, const char* element);
    void append_segments(Tag segment, Joined& joined);
    [[nodiscard]] unsigned depth() const;
    [[nodiscard]] std::string path(const char* element) const;

    const std::uint8_t* next_;
    const std::uint8_t* end_;
    DecodeAttempt& attempt_;
    const Reader* parent_;
    const char* element_;
};

} // namespace norvane
