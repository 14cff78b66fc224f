#pragma once

#include <algorithm>
#include <functional>
#include <string_view>

namespace norvane {

[[nodiscard]] constexpr char to_ascii_lower(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Orders text by its bytes with the ASCII letters taken as small ones. So names compare on the
/// platform, as far as they are ASCII.
struct AsciiCaseLess {
    using is_transparent = void;

    [[nodiscard]] constexpr bool operator()(std::string_view a, std::string_view b) const noexcept {
        return std::ranges::lexicographical_compare(a, b, std::ranges::less{}, to_ascii_lower,
                                                    to_ascii_lower);
    }
};

[[nodiscard]] constexpr bool equal_ignoring_case(std::string_view a, std::string_view b) noexcept {
    return std::ranges::equal(a, b, std::ranges::equal_to{}, to_ascii_lower, to_ascii_lower);
}

} // namespace norvane
