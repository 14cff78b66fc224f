#include "provider/ModuleLoad.h"

namespace {

HINSTANCE module_handle = nullptr;
DWORD thread_slot = 0;

} // namespace

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID /*reserved*/) {
    switch (reason) {
    case DLL_PROCESS_ATTACH:
        module_handle = module;
        thread_slot = TlsAlloc();
        return thread_slot != TLS_OUT_OF_INDEXES ? TRUE : FALSE;
    case DLL_PROCESS_DETACH:
        if (thread_slot != 0) {
            TlsFree(thread_slot);
        }
        return TRUE;
    default:
        return TRUE;
    }
}
