#pragma once

#include <norvane/wincrypt.h>

namespace norvane {

/// The key of the registry under HKEY_LOCAL_MACHINE in which all settings of the module are values.
inline constexpr LPCWSTR pkiv_key = NORVANE_W("SOFTWARE\\Norvane\\PkiValidator");
/// How it is opened: for reading, in the registry's view for 32-bit programs.
inline constexpr REGSAM pkiv_key_access = KEY_QUERY_VALUE | KEY_WOW64_32KEY;

} // namespace norvane
