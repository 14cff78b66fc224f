#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace norvane {

/// Where two texts, of which each should be JSON, differ: the place (RFC 6901), what is expected
/// there and what was got. At most ten, with at most 80 octets of each value.
[[nodiscard]] std::vector<std::string> differences_of(std::string_view expected,
                                                      std::string_view got);

} // namespace norvane
