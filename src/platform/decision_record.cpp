#include <norvane/wincrypt.h>

namespace {

struct Listener {
    PFN_NORVANE_RECORD_LISTENER function = nullptr;
    void* context = nullptr;
};

constinit thread_local Listener listener;

} // namespace

void NorvaneSetRecordListener(PFN_NORVANE_RECORD_LISTENER pfnListener, void* pvContext) noexcept {
    listener = {pfnListener, pvContext};
}

BOOL NorvaneIsRecordWanted() noexcept { return listener.function != nullptr ? TRUE : FALSE; }

void NorvaneRecordEvent(const NORVANE_RECORD_EVENT* pEvent) noexcept {
    if (listener.function == nullptr || pEvent == nullptr) {
        return;
    }
    const DWORD error = GetLastError();
    listener.function(pEvent, listener.context);
    SetLastError(error);
}
