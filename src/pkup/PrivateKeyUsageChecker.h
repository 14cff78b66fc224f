#pragma once

#include <norvane/platform/pkup.h>

#include <atomic>

namespace norvane {

/// The component's only class. An object has no state beside its count of references, so any
/// threads may use it at once.
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): it would stand in the table
class PrivateKeyUsageChecker final : public IPrivateKeyUsageChecker {
  public:
    /// An object with one reference, which belongs to the caller; null without memory.
    [[nodiscard]] static PrivateKeyUsageChecker* create() noexcept;

    HRESULT QueryInterface(REFIID riid, void** ppvObject) noexcept override;
    ULONG AddRef() noexcept override { return ++references_; }
    ULONG Release() noexcept override;

    // The method has no names to be called by: whoever uses it knows the interface.
    HRESULT GetTypeInfoCount(UINT* pctinfo) noexcept override;
    HRESULT GetTypeInfo(UINT iTInfo, LCID lcid, ITypeInfo** ppTInfo) noexcept override;
    HRESULT GetIDsOfNames(REFIID riid, LPOLESTR* rgszNames, UINT cNames, LCID lcid,
                          DISPID* rgDispId) noexcept override;
    HRESULT Invoke(DISPID dispIdMember, REFIID riid, LCID lcid, WORD wFlags,
                   DISPPARAMS* pDispParams, VARIANT* pVarResult, EXCEPINFO* pExcepInfo,
                   UINT* puArgErr) noexcept override;

    HRESULT Check(VARIANT certificate, DATE local_time, VARIANT_BOOL* result) noexcept override;

  private:
    PrivateKeyUsageChecker() = default;
    ~PrivateKeyUsageChecker() = default;

    std::atomic<ULONG> references_{1};
};

} // namespace norvane
