#pragma once

#include <norvane/wincrypt.h>

namespace norvane {

/// What modules are told: the caller's parameters, made out anew for every question, so that no
/// module sees what another has left in them.
class ModuleParameters {
  public:
    /// @param caller null: none of the fields is there.
    ModuleParameters(const CERT_REVOCATION_PARA* caller, DWORD flags) noexcept;
    ModuleParameters(const ModuleParameters&) = delete;
    ModuleParameters& operator=(const ModuleParameters&) = delete;
    /// Gives the caller's structure what `keep_crls` has kept, else null.
    ~ModuleParameters();

    /// Makes the parameters out, for a certificate that may have been issued by `issuer` (null:
    /// nothing is known of that). The CRLs of the question before are released.
    void make_out(PCCERT_CONTEXT issuer) noexcept;

    [[nodiscard]] PCERT_REVOCATION_PARA para() noexcept { return &para_; }
    [[nodiscard]] DWORD flags() const noexcept { return flags_; }

    /// The CRLs that the module has told of, if the caller asks for them.
    [[nodiscard]] const CERT_REVOCATION_CRL_INFO& crls() const noexcept { return crls_; }

    /// The CRLs of the question before are what the caller gets, unless another one follows.
    void keep_crls() noexcept { crls_are_kept_ = true; }

  private:
    void release_crls() noexcept;
    void limit_time() noexcept;
    /// Of a budget of milliseconds that began with the caller's question.
    [[nodiscard]] DWORD time_left(DWORD budget) const noexcept;

    CERT_REVOCATION_PARA caller_{}; ///< its fields that are there, and 0 for the others
    DWORD caller_flags_;
    ULONGLONG begin_ms_; ///< of GetTickCount64, if there is a budget; otherwise 0
    CERT_REVOCATION_PARA para_{};
    DWORD flags_ = 0;
    CERT_REVOCATION_CRL_INFO crls_{};
    bool crls_are_kept_ = false;
};

} // namespace norvane
