#pragma once

#include <string_view>

namespace norvane {

/// The text without the white space around it; carriage returns count as such.
[[nodiscard]] constexpr std::string_view trim(std::string_view text) noexcept {
    constexpr std::string_view white_space = " \t\r\v\f";
    const std::size_t first = text.find_first_not_of(white_space);
    return first == text.npos ? std::string_view()
                              : text.substr(first, text.find_last_not_of(white_space) - first + 1);
}

} // namespace norvane
