#include "pkup/PrivateKeyUsageChecker.h"
#include "platform/HResult.h"

namespace norvane {
namespace {

/// The one factory of the component. It is not counted: the component stays loaded.
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): it would stand in the table
class CheckerFactory final : public IClassFactory {
  public:
    HRESULT QueryInterface(REFIID riid, void** ppvObject) noexcept override {
        if (ppvObject == nullptr) {
            return hresult(E_POINTER);
        }
        const bool known = riid == IID_IUnknown || riid == IID_IClassFactory;
        *ppvObject = known ? static_cast<IClassFactory*>(this) : nullptr;
        return known ? hresult(S_OK) : hresult(E_NOINTERFACE);
    }
    ULONG AddRef() noexcept override { return 2; }
    ULONG Release() noexcept override { return 1; }

    HRESULT CreateInstance(IUnknown* pUnkOuter, REFIID riid, void** ppvObject) noexcept override {
        if (ppvObject == nullptr) {
            return hresult(E_POINTER);
        }
        *ppvObject = nullptr;
        if (pUnkOuter != nullptr) {
            return hresult(CLASS_E_NOAGGREGATION);
        }
        PrivateKeyUsageChecker* const checker = PrivateKeyUsageChecker::create();
        if (checker == nullptr) {
            return hresult(E_OUTOFMEMORY);
        }
        const HRESULT result = checker->QueryInterface(riid, ppvObject);
        checker->Release();
        return result;
    }
    HRESULT LockServer(BOOL /*fLock*/) noexcept override { return S_OK; }
};

constinit CheckerFactory factory;

} // namespace
} // namespace norvane

STDAPI DllGetClassObject(REFCLSID rclsid, REFIID riid, LPVOID* ppv) {
    if (ppv == nullptr) {
        return norvane::hresult(E_POINTER);
    }
    if (rclsid != CLSID_PrivateKeyUsageChecker) {
        *ppv = nullptr;
        return norvane::hresult(CLASS_E_CLASSNOTAVAILABLE);
    }
    return norvane::factory.QueryInterface(riid, ppv);
}
