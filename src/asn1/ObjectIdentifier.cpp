#include "asn1/ObjectIdentifier.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace norvane {
namespace {

constexpr std::uint8_t more_groups_bit = 0x80;
constexpr std::uint32_t arcs_below_a_root = 40; // X.690 8.19.4: only root 2 may have more.

/// Reads content octets arc by arc. The first number that they encode holds two arcs.
class ArcReader {
  public:
    explicit ArcReader(ByteView content) : next_(content.begin()), end_(content.end()) {}

    [[nodiscard]] bool at_end() const { return next_ == end_ && !second_pending_; }

    /// The next arc in `arc`; false if it exceeds 32 bits.
    [[nodiscard]] bool read(std::uint32_t& arc) {
        std::uint64_t value = 0;
        if (second_pending_) {
            second_pending_ = false;
            value = second_;
        } else {
            value = read_number();
            if (first_) {
                first_ = false;
                const std::uint64_t root = std::min<std::uint64_t>(value / arcs_below_a_root, 2);
                second_ = value - root * arcs_below_a_root;
                second_pending_ = true;
                value = root;
            }
        }
        arc = static_cast<std::uint32_t>(value);
        return value <= std::numeric_limits<std::uint32_t>::max();
    }

  private:
    /// One number of seven-bit groups; one that exceeds 56 bits becomes some number above them.
    std::uint64_t read_number() {
        constexpr std::uint64_t largest_exact = (std::uint64_t{1} << 56) - 1;
        std::uint64_t value = 0;
        while (next_ != end_) {
            const std::uint8_t group = *next_++;
            value = std::min(value, largest_exact) << 7 | (group & 0x7fU);
            if ((group & more_groups_bit) == 0) {
                break;
            }
        }
        return value;
    }

    const std::uint8_t* next_;
    const std::uint8_t* end_;
    std::uint64_t second_ = 0;
    bool second_pending_ = false;
    bool first_ = true;
};

} // namespace

bool operator==(const ASN1OBJID& a, const ASN1OBJID& b) {
    return a.numids == b.numids &&
           std::equal(a.subid.begin(), a.subid.begin() + a.numids, b.subid.begin());
}

bool ASN1TObjId::well_formed(ByteView content) {
    if (content.empty() || (content.data[content.length - 1] & more_groups_bit) != 0) {
        return false;
    }
    bool starts_a_number = true;
    for (const std::uint8_t group : content) {
        if (starts_a_number && group == more_groups_bit) {
            return false;
        }
        starts_a_number = (group & more_groups_bit) == 0;
    }
    return true;
}

bool ASN1TObjId::get_arcs(ASN1OBJID& arcs) const {
    arcs.numids = 0;
    ArcReader reader(content_);
    while (!reader.at_end()) {
        if (arcs.numids == ASN1OBJID::max_arcs || !reader.read(arcs.subid[arcs.numids])) {
            return false;
        }
        ++arcs.numids;
    }
    return true;
}

bool operator==(const ASN1TObjId& a, const ASN1OBJID& b) {
    ArcReader reader(a.content_);
    std::uint32_t index = 0;
    while (!reader.at_end()) {
        std::uint32_t arc = 0;
        if (!reader.read(arc) || index == b.numids || b.subid[index] != arc) {
            return false;
        }
        ++index;
    }
    return index == b.numids;
}

std::size_t rtOidToStr(const ASN1OBJID& oid, char* buffer, std::size_t size) {
    if (oid.numids == 0 || size == 0) {
        return 0;
    }
    char* next = buffer;
    char* const last = buffer + size - 1; // Leaves room for the terminator.
    for (std::uint32_t i = 0; i < oid.numids; ++i) {
        if (i != 0) {
            if (next == last) {
                return 0;
            }
            *next++ = '.';
        }
        const auto [end, error] = std::to_chars(next, last, oid.subid[i]);
        if (error != std::errc()) {
            return 0;
        }
        next = end;
    }
    *next = '\0';
    return static_cast<std::size_t>(next - buffer);
}

} // namespace norvane
