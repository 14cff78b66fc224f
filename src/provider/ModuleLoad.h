#pragma once

#include <norvane/wincrypt.h>

namespace norvane {

/// Whether the module could not reserve what it wants at load time. A platform whose loader heeds
/// the answer of DllMain has no such module; on any other it checks nothing.
[[nodiscard]] bool load_was_refused();

} // namespace norvane

/// The module's entry function, called with DLL_PROCESS_ATTACH and DLL_PROCESS_DETACH. FALSE if no
/// thread-local slot is to be had: the load then fails, as intended.
extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved);
