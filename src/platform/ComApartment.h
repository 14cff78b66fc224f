#pragma once

namespace norvane {

/// Whether the calling thread is between CoInitializeEx and CoUninitialize.
[[nodiscard]] bool thread_has_entered_com() noexcept;

} // namespace norvane
