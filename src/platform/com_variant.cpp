#include "platform/HResult.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr VARTYPE plain_types[] = {VT_EMPTY, VT_NULL,  VT_I2,   VT_I4,  VT_R4,  VT_R8,
                                   VT_DATE,  VT_ERROR, VT_BOOL, VT_I1,  VT_UI1, VT_UI2,
                                   VT_UI4,   VT_I8,    VT_UI8,  VT_INT, VT_UINT};

void release(IUnknown* object) {
    if (object != nullptr) {
        object->Release();
    }
}

} // namespace

HRESULT VariantClear(VARIANT* pvarg) noexcept {
    if (pvarg == nullptr) {
        return norvane::hresult(E_INVALIDARG);
    }
    const auto type = static_cast<VARTYPE>(pvarg->vt & ~unsigned{VT_BYREF});
    const bool holds_object = type == VT_UNKNOWN || type == VT_DISPATCH;
    if (!holds_object && std::ranges::find(plain_types, type) == std::end(plain_types)) {
        return norvane::hresult(DISP_E_BADVARTYPE);
    }
    const bool owned = type == pvarg->vt;
    pvarg->vt = VT_EMPTY;
    if (owned && type == VT_UNKNOWN) {
        release(pvarg->punkVal);
    } else if (owned && type == VT_DISPATCH) {
        release(pvarg->pdispVal);
    }
    return S_OK;
}
