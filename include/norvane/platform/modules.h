#pragma once

#include <norvane/platform/types.h>

/// Loadable modules: shared libraries that the platform loads because the configuration names them,
/// and whose functions it looks up by their plain names.
///
/// A module may export an entry function
///
///     BOOL WINAPI DllMain(HINSTANCE hinstDLL, DWORD fdwReason, LPVOID lpvReserved);
///
/// On Linux it is called once with `DLL_PROCESS_ATTACH` after the module was loaded, and once with
/// `DLL_PROCESS_DETACH` when the process exits, when other threads may still be inside the module.
/// FALSE for the attachment refuses the load: the detachment follows at once and the module is
/// unloaded. Threads are not told of. `lpvReserved` is null, but not at the exit of the process.

/// A loaded module.
typedef void* HINSTANCE;
typedef HINSTANCE HMODULE;

#define DLL_PROCESS_DETACH 0U
#define DLL_PROCESS_ATTACH 1U
#define DLL_THREAD_ATTACH 2U
#define DLL_THREAD_DETACH 3U
