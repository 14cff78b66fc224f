#include "xer/KeyBlob.h"

#include <algorithm>
#include <array>

namespace norvane {
namespace {

constexpr std::size_t algorithm_offset = 4;
constexpr std::size_t bit_length_offset = 12;
constexpr std::uint32_t bits_of_an_octet = 8;

constexpr std::array<BYTE, key_blob_header_size> header_of_no_key{6, 0x20, 1,   0,   0,   0,
                                                                  0, 0,    'M', 'A', 'G', '1'};

void write_number(BYTE* out, std::uint32_t number) {
    for (unsigned shift = 0; shift != 32; shift += 8) {
        *out++ = static_cast<BYTE>(number >> shift);
    }
}

} // namespace

void write_key_blob_header(BYTE* out, ALG_ID algorithm, std::uint32_t key_size) {
    std::copy(header_of_no_key.begin(), header_of_no_key.end(), out);
    write_number(out + algorithm_offset, algorithm);
    write_number(out + bit_length_offset, key_size * bits_of_an_octet);
}

std::uint32_t key_size_in(const BYTE* header) {
    std::uint32_t bits = 0;
    for (std::size_t i = sizeof bits; i != 0; --i) {
        bits = bits << 8 | header[bit_length_offset + i - 1];
    }
    return bits / bits_of_an_octet;
}

} // namespace norvane
