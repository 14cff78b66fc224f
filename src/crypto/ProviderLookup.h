#pragma once

#include "crypto/ProviderEnumerators.h"

#include <norvane/wincrypt.h>

namespace norvane {

/// A search for a provider that has an algorithm. It owns the handle that it holds.
class CFindAlgIdIn {
  public:
    explicit CFindAlgIdIn(ALG_ID sought) noexcept : algid(sought) {}
    CFindAlgIdIn(const CFindAlgIdIn&) = delete;
    CFindAlgIdIn& operator=(const CFindAlgIdIn&) = delete;
    /// Drops the handle; a failure to do so is passed over.
    ~CFindAlgIdIn();

    ALG_ID algid;
    HCRYPTPROV provider = 0; ///< 0 while nothing is held
};

/// Opens a provider in the place of the one that the search holds, and tells whether it has the
/// algorithm sought. If so, the search keeps holding it; if not, it holds nothing.
///
/// A provider that cannot be opened, or does not tell its algorithms, throws CAtlException and so
/// ends the whole search; it does not pass for one that lacks the algorithm. Throws PlatformFailure
/// if the process is to blame.
///
/// @param name null for the default provider of the type.
[[nodiscard]] bool has_algorithm(CFindAlgIdIn& search, DWORD type, const WCHAR* name);

/// Looks in the default provider of each type.
class CFindAlgIdInDefaultProviders final : public CFindAlgIdIn,
                                           public CCryptProviderTypesEnumT<WCHAR> {
  public:
    using CFindAlgIdIn::CFindAlgIdIn;
    bool on_provider_type(DWORD type, const WCHAR* name) override;
};

/// Looks in every installed provider.
class CFindAlgIdInProviders final : public CFindAlgIdIn, public CCryptProvidersEnumT<WCHAR> {
  public:
    using CFindAlgIdIn::CFindAlgIdIn;
    bool on_provider(const WCHAR* name, DWORD type) override;
};

/// A provider that has the algorithm: the default ones of the types are asked first, then all that
/// are installed. For 0 it is the default provider of PROV_RSA_FULL, and nobody is asked.
///
/// Returns a handle that the caller releases, or 0 if no provider has the algorithm. Throws
/// CAtlException if a provider that is asked fails, and PlatformFailure if the process does.
[[nodiscard]] HCRYPTPROV find_provider_for_algid(ALG_ID algid);

} // namespace norvane
