#include "asn1/DottedText.h"

#include <array>
#include <charconv>

namespace norvane {
namespace {

constexpr std::uint32_t arcs_below_a_root = 40; // X.690 8.19.4: only root 2 may have more.
constexpr std::uint32_t last_root = 2;

/// Takes one arc off the front of `text`.
bool take_arc(std::string_view& text, std::uint32_t& arc) {
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, arc);
    const auto digits = static_cast<std::size_t>(rest - text.data());
    if (error != std::errc() || (text.front() == '0' && digits != 1)) {
        return false;
    }
    text.remove_prefix(digits);
    return true;
}

bool read_arcs(std::string_view text, ASN1OBJID& oid) {
    while (oid.numids != ASN1OBJID::max_arcs && take_arc(text, oid.subid[oid.numids])) {
        ++oid.numids;
        if (text.empty()) {
            return true;
        }
        if (text.front() != '.') {
            return false;
        }
        text.remove_prefix(1);
    }
    return false;
}

void append_number(std::vector<std::uint8_t>& octets, std::uint64_t number) {
    unsigned shift = 0;
    while (number >> shift > 0x7f) {
        shift += 7;
    }
    for (; shift != 0; shift -= 7) {
        octets.push_back(static_cast<std::uint8_t>(0x80 | (number >> shift & 0x7f)));
    }
    octets.push_back(static_cast<std::uint8_t>(number & 0x7f));
}

} // namespace

std::optional<std::vector<std::uint8_t>> octets_of_dotted(std::string_view text) {
    ASN1OBJID oid;
    if (!read_arcs(text, oid) || oid.numids < 2) {
        return std::nullopt;
    }
    const std::uint32_t root = oid.subid[0];
    if (root > last_root || (root < last_root && oid.subid[1] >= arcs_below_a_root)) {
        return std::nullopt;
    }
    std::vector<std::uint8_t> octets;
    append_number(octets, std::uint64_t{root} * arcs_below_a_root + oid.subid[1]);
    for (std::uint32_t i = 2; i < oid.numids; ++i) {
        append_number(octets, oid.subid[i]);
    }
    return octets;
}

std::optional<std::string> dotted_text(const ASN1TObjId& oid) {
    constexpr std::size_t longest_arc = 11; // ".4294967295"
    std::array<char, ASN1OBJID::max_arcs * longest_arc + 1> text{};
    ASN1OBJID arcs;
    const std::size_t length = oid.get_arcs(arcs) ? rtOidToStr(arcs, text.data(), text.size()) : 0;
    return length == 0 ? std::nullopt : std::optional(std::string(text.data(), length));
}

} // namespace norvane
