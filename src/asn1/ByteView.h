#pragma once

#include <cstdint>
#include <cstring>

namespace norvane {

/// A run of bytes that somebody else owns. It is passed by value and never frees anything; whoever
/// hands one out says what keeps the bytes alive.
struct ByteView {
    const std::uint8_t* data = nullptr;
    std::uint32_t length = 0;

    [[nodiscard]] constexpr const std::uint8_t* begin() const { return data; }
    [[nodiscard]] constexpr const std::uint8_t* end() const { return data + length; }
    [[nodiscard]] constexpr bool empty() const { return length == 0; }

    [[nodiscard]] friend bool operator==(ByteView a, ByteView b) {
        return a.length == b.length &&
               (a.length == 0 || std::memcmp(a.data, b.data, a.length) == 0);
    }
};

} // namespace norvane
