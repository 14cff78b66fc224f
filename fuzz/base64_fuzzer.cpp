#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "values/Base64.h"

namespace {

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

// Any text decodes to one size, whatever the room, and no byte goes beyond the room.
void check_decoding(const char* text, std::uint32_t count) {
    std::uint32_t needed = 0;
    const bool valid = norvane::base64_decode(text, count, nullptr, &needed);
    for (const std::uint32_t room : {needed / 2 + 1, needed + 1, needed + 3}) {
        std::vector<std::uint8_t> output(room);
        std::uint32_t size = room;
        const bool decoded = norvane::base64_decode(text, count, output.data(), &size);
        require(decoded == (valid && needed <= room) && size == needed);
    }
}

void check_round_trip(const std::uint8_t* bytes, std::uint32_t count) {
    std::uint32_t size = 0;
    require(norvane::base64_encode(bytes, count, nullptr, &size));
    std::vector<char> text(size);
    require(norvane::base64_encode(bytes, count, text.data(), &size) && size == text.size());
    std::vector<std::uint8_t> decoded(count);
    std::uint32_t decoded_size = count;
    require(norvane::base64_decode(text.data(), size, decoded.data(), &decoded_size));
    require(decoded_size == count && std::memcmp(decoded.data(), bytes, count) == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size != 0) {
        const auto count = static_cast<std::uint32_t>(size);
        check_decoding(reinterpret_cast<const char*>(data), count);
        check_round_trip(data, count);
    }
    return 0;
}
