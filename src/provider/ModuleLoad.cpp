#include "provider/ModuleLoad.h"

#ifdef _WIN32

namespace norvane {

// The loader does not keep a module whose DllMain says no.
bool load_was_refused() { return false; }

} // namespace norvane

#else

namespace {

bool refused = false;

// The dynamic loader knows no entry function and takes no answer, so its two moments stand for the
// calls of DllMain.

[[gnu::constructor]] void attach() {
    refused = DllMain(nullptr, DLL_PROCESS_ATTACH, nullptr) == FALSE;
}

[[gnu::destructor]] void detach() { DllMain(nullptr, DLL_PROCESS_DETACH, nullptr); }

} // namespace

namespace norvane {

bool load_was_refused() { return refused; }

} // namespace norvane

#endif
