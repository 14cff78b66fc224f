#include "asn1/MinimalLengths.h"

#include "asn1/BerHeader.h"
#include "asn1/Reader.h"

#include <array>
#include <cstring>
#include <limits>

namespace norvane {
namespace {

/// Walks the elements of one BER element in encoded order and tells a visitor: open(header) and
/// close() around a constructed element, primitive(header, content) for one that is not.
class Walker {
  public:
    explicit Walker(ByteView input) : input_(input), at_(input.begin()), end_(input.end()) {}

    /// False if the input is not exactly one element; the failure then stands in `failure`. The
    /// visitor has seen what came before. A visitor ends the walk early by returning false.
    template <class Visitor>
    bool walk(Visitor& visitor) {
        do {
            if (!step(visitor)) {
                return false;
            }
            while (depth_ != 0 && closes_here()) {
                if (!visitor.close()) {
                    return false;
                }
                end_ = open_[--depth_].outer_end;
            }
        } while (depth_ != 0);
        return at_ == end_ || fail(ASN1Status::trailing_bytes, at_, "the end of the data",
                                   std::to_string(end_ - at_) + " more octets");
    }

    ASN1Failure failure;

  private:
    struct Open {
        const std::uint8_t* outer_end;
        bool indefinite;
    };

    template <class Visitor>
    bool step(Visitor& visitor) {
        const std::uint8_t* const start = at_;
        BerHeader header;
        if (!read_ber_header(input_, at_, end_, header, failure)) {
            return false;
        }
        at_ = header.content;
        if (!header.constructed()) {
            const ByteView content{at_, header.length};
            at_ = content.end();
            return visitor.primitive(header, content);
        }
        if (depth_ == open_.size()) {
            return fail(ASN1Status::nested_too_deeply, start,
                        "at most " + std::to_string(max_nesting) + " levels of nesting", "more");
        }
        open_[depth_++] = {end_, header.indefinite};
        end_ = header.indefinite ? end_ : at_ + header.length;
        return visitor.open(header);
    }

    /// Whether the innermost open element ends at this place; end-of-contents octets are consumed.
    bool closes_here() {
        if (!open_[depth_ - 1].indefinite) {
            return at_ == end_;
        }
        if (end_ - at_ >= 2 && at_[0] == 0 && at_[1] == 0) {
            at_ += 2;
            return true;
        }
        return false;
    }

    bool fail(ASN1Status status, const std::uint8_t* at, std::string expected, std::string found) {
        failure = ber_failure(status, input_, at, std::move(expected), std::move(found));
        return false;
    }

    ByteView input_;
    const std::uint8_t* at_;
    const std::uint8_t* end_;
    std::array<Open, max_nesting> open_{};
    std::size_t depth_ = 0;
};

/// Finds the new content length of every constructed element, and the new length of the whole.
class Measure {
  public:
    explicit Measure(std::vector<std::uint32_t>& content_lengths)
        : content_lengths_(content_lengths) {}

    bool open(const BerHeader& header) {
        open_[++depth_] = {content_lengths_.size(), header.tag.length, 0};
        content_lengths_.push_back(0);
        return true;
    }
    bool close() {
        const Open closed = open_[depth_--];
        content_lengths_[closed.index] = closed.length;
        add(closed.tag_length, closed.length);
        return true;
    }
    bool primitive(const BerHeader& header, ByteView content) {
        add(header.tag.length, content.length);
        return true;
    }
    [[nodiscard]] std::uint32_t total() const { return open_[0].length; }

  private:
    struct Open {
        std::size_t index;
        std::uint32_t tag_length;
        std::uint32_t length;
    };

    void add(std::uint32_t tag_length, std::uint32_t length) {
        open_[depth_].length += tag_length + length_octets(length) + length;
    }

    std::vector<std::uint32_t>& content_lengths_;
    std::array<Open, max_nesting + 1> open_{}; // The first stands for what is around the element.
    std::size_t depth_ = 0;
};

/// Writes the element with its new lengths.
class Write {
  public:
    Write(const std::vector<std::uint32_t>& content_lengths, std::uint8_t* out)
        : next_length_(content_lengths.begin()), out_(out) {}

    bool open(const BerHeader& header) {
        write_header(header, *next_length_++);
        return true;
    }
    bool close() { return true; }
    bool primitive(const BerHeader& header, ByteView content) {
        write_header(header, content.length);
        if (!content.empty()) {
            std::memcpy(out_, content.data, content.length);
            out_ += content.length;
        }
        return true;
    }

  private:
    void write_header(const BerHeader& header, std::uint32_t length) {
        std::memcpy(out_, header.tag.data, header.tag.length);
        out_ = write_length(out_ + header.tag.length, length);
    }

    std::vector<std::uint32_t>::const_iterator next_length_;
    std::uint8_t* out_;
};

/// Follows the rewritten element up to one offset and remembers where in the input that is.
class Locate {
  public:
    Locate(const std::vector<std::uint32_t>& content_lengths, std::uint32_t offset)
        : next_length_(content_lengths.begin()), left_(offset) {}

    bool open(const BerHeader& header) { return step_over_header(header, *next_length_++); }
    bool close() { return true; }
    bool primitive(const BerHeader& header, ByteView content) {
        if (!step_over_header(header, content.length)) {
            return false;
        }
        if (left_ < content.length) {
            found = content.data + left_;
            return false;
        }
        left_ -= content.length;
        found = content.end();
        return true;
    }

    const std::uint8_t* found = nullptr;

  private:
    bool step_over_header(const BerHeader& header, std::uint32_t length) {
        const std::uint32_t octets = header.tag.length + length_octets(length);
        found = header.tag.data;
        if (left_ < octets) {
            return false;
        }
        left_ -= octets;
        found = header.content;
        return true;
    }

    std::vector<std::uint32_t>::const_iterator next_length_;
    std::uint32_t left_;
};

} // namespace

ASN1Failure MinimalLengths::measure() {
    content_lengths_.clear();
    Walker walker(input_);
    Measure measure(content_lengths_);
    walker.walk(measure);
    total_ = measure.total();
    return std::move(walker.failure);
}

ByteView MinimalLengths::rewrite(ASN1CTXT& ctxt) const {
    auto* out = static_cast<std::uint8_t*>(rtMemHeapAlloc(ctxt, total_));
    Walker walker(input_);
    Write write(content_lengths_, out);
    walker.walk(write);
    return {out, total_};
}

std::uint32_t MinimalLengths::input_offset(std::uint32_t offset) const {
    Walker walker(input_);
    Locate locate(content_lengths_, offset);
    walker.walk(locate);
    return static_cast<std::uint32_t>(locate.found - input_.begin());
}

} // namespace norvane
