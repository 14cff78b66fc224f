#include "platform/store/ObjectIdentifierText.h"

#include <algorithm>
#include <cstdint>

namespace norvane {
namespace {

__extension__ using Arc = unsigned __int128;

constexpr unsigned more_bit = 0x80;
constexpr int bits_per_octet = 7;
constexpr std::size_t longest_first_two_arcs = 4; // "2.47"
constexpr std::size_t longest_per_octet = 4;      // ".127"; longer arcs take less for each octet

char* write_arc(Arc arc, char* out) {
    char* const start = out;
    do {
        *out++ = static_cast<char>('0' + static_cast<int>(arc % 10));
        arc /= 10;
    } while (arc != 0);
    std::reverse(start, out);
    return out;
}

} // namespace

std::size_t object_identifier_text_room(const ASN1TObjId& identifier) {
    return longest_first_two_arcs + longest_per_octet * identifier.content().length + 1;
}

char* write_object_identifier_text(const ASN1TObjId& identifier, char* out) {
    char* const start = out;
    Arc arc = 0;
    for (const std::uint8_t octet : identifier.content()) {
        if (arc > ~Arc{0} >> bits_per_octet) {
            out = start;
            break;
        }
        arc = arc << bits_per_octet | (octet & ~more_bit);
        if ((octet & more_bit) != 0) {
            continue;
        }
        if (out == start) {
            // The first two arcs are encoded as one (X.690 8.19.4).
            const int first = arc < 80 ? static_cast<int>(arc) / 40 : 2;
            *out++ = static_cast<char>('0' + first);
            arc -= static_cast<unsigned>(40 * first);
        }
        *out++ = '.';
        out = write_arc(arc, out);
        arc = 0;
    }
    *out++ = '\0';
    return out;
}

} // namespace norvane
