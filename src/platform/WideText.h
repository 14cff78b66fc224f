#pragma once

#include <norvane/wincrypt.h>

#include <string>
#include <string_view>

namespace norvane {

/// UTF-16 as UTF-8; a surrogate without its partner becomes U+FFFD.
[[nodiscard]] std::string to_utf8(std::u16string_view text);

/// UTF-8 as UTF-16; ill-formed sequences become U+FFFD.
[[nodiscard]] std::u16string to_utf16(std::string_view text);

} // namespace norvane
