#pragma once

#include <norvane/platform/com.h>

namespace norvane {

/// The codes of results are unsigned literals; a method returns them as HRESULT.
[[nodiscard]] constexpr HRESULT hresult(DWORD code) noexcept { return static_cast<HRESULT>(code); }

} // namespace norvane
