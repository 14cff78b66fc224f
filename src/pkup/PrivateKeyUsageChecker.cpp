#include "pkup/PrivateKeyUsageChecker.h"

#include "pkup/LocalTime.h"
#include "pkup/UsagePeriod.h"
#include "platform/HResult.h"

#include <norvane/wincrypt.h>

#include <new>

namespace norvane {

PrivateKeyUsageChecker* PrivateKeyUsageChecker::create() noexcept {
    return new (std::nothrow) PrivateKeyUsageChecker;
}

HRESULT PrivateKeyUsageChecker::QueryInterface(REFIID riid, void** ppvObject) noexcept {
    if (ppvObject == nullptr) {
        return hresult(E_POINTER);
    }
    if (riid != IID_IUnknown && riid != IID_IDispatch && riid != IID_IPrivateKeyUsageChecker) {
        *ppvObject = nullptr;
        return hresult(E_NOINTERFACE);
    }
    AddRef();
    *ppvObject = static_cast<IPrivateKeyUsageChecker*>(this);
    return S_OK;
}

ULONG PrivateKeyUsageChecker::Release() noexcept {
    const ULONG left = --references_;
    if (left == 0) {
        delete this;
    }
    return left;
}

HRESULT PrivateKeyUsageChecker::GetTypeInfoCount(UINT* pctinfo) noexcept {
    if (pctinfo == nullptr) {
        return hresult(E_POINTER);
    }
    *pctinfo = 0;
    return S_OK;
}

HRESULT PrivateKeyUsageChecker::GetTypeInfo(UINT /*iTInfo*/, LCID /*lcid*/,
                                            ITypeInfo** /*ppTInfo*/) noexcept {
    return hresult(E_NOTIMPL);
}

HRESULT PrivateKeyUsageChecker::GetIDsOfNames(REFIID /*riid*/, LPOLESTR* /*rgszNames*/,
                                              UINT /*cNames*/, LCID /*lcid*/,
                                              DISPID* /*rgDispId*/) noexcept {
    return hresult(E_NOTIMPL);
}

HRESULT PrivateKeyUsageChecker::Invoke(DISPID /*dispIdMember*/, REFIID /*riid*/, LCID /*lcid*/,
                                       WORD /*wFlags*/, DISPPARAMS* /*pDispParams*/,
                                       VARIANT* /*pVarResult*/, EXCEPINFO* /*pExcepInfo*/,
                                       UINT* /*puArgErr*/) noexcept {
    return hresult(E_NOTIMPL);
}

HRESULT PrivateKeyUsageChecker::Check(VARIANT certificate, DATE local_time,
                                      VARIANT_BOOL* result) noexcept {
    if (result == nullptr) {
        return hresult(E_POINTER);
    }
    *result = VARIANT_FALSE;
    if (certificate.vt != VT_UI8) {
        return hresult(DISP_E_TYPEMISMATCH);
    }
    const auto* const context = reinterpret_cast<PCCERT_CONTEXT>(certificate.ullVal);
    if (context == nullptr || context->pbCertEncoded == nullptr) {
        return hresult(E_POINTER);
    }
    try {
        const auto moment = utc_of_local_date(local_time);
        if (!moment) {
            return hresult(E_INVALIDARG);
        }
        const auto period = read_usage_period({context->pbCertEncoded, context->cbCertEncoded});
        if (!period) {
            return hresult(CRYPT_E_ASN1_CORRUPT);
        }
        *result = period->contains(*moment) ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    } catch (const std::bad_alloc&) {
        return hresult(E_OUTOFMEMORY);
    }
}

} // namespace norvane
