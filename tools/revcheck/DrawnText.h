#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace norvane {

/// The text made printable and cut in its middle, with an ellipsis there, to so many columns.
/// Characters that may be shown twice as wide as others count as two.
[[nodiscard]] std::string shortened(std::string_view text, std::size_t columns);

/// Printable text in lines of so many columns, broken at spaces where there are any.
[[nodiscard]] std::vector<std::string> folded(std::string_view text, std::size_t columns);

} // namespace norvane
