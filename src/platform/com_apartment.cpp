#include "platform/ComApartment.h"

#include "platform/HResult.h"

namespace {

constexpr DWORD mode_mask = COINIT_APARTMENTTHREADED;
constexpr DWORD hints = COINIT_DISABLE_OLE1DDE | COINIT_SPEED_OVER_MEMORY;

struct Apartment {
    DWORD mode;
    ULONG entered; ///< successful calls of CoInitializeEx without their CoUninitialize
};

constinit thread_local Apartment apartment{};

} // namespace

bool norvane::thread_has_entered_com() noexcept { return apartment.entered != 0; }

HRESULT CoInitializeEx(LPVOID pvReserved, DWORD dwCoInit) noexcept {
    if (pvReserved != nullptr || (dwCoInit & ~(mode_mask | hints)) != 0) {
        return norvane::hresult(E_INVALIDARG);
    }
    const DWORD mode = dwCoInit & mode_mask;
    if (apartment.entered == 0) {
        apartment = {.mode = mode, .entered = 1};
        return S_OK;
    }
    if (apartment.mode != mode) {
        return norvane::hresult(RPC_E_CHANGED_MODE);
    }
    ++apartment.entered;
    return S_FALSE;
}

void CoUninitialize() noexcept {
    if (apartment.entered != 0) {
        --apartment.entered;
    }
}
