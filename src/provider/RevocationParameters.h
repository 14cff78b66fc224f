#pragma once

#include <norvane/wincrypt.h>

#include <span>

namespace norvane {

/// What a caller may leave out of CERT_REVOCATION_PARA, with what stands for it then.
struct RevocationParameters {
    /// Takes the fields that are there; all pointers stay the caller's. Null has no field.
    explicit RevocationParameters(const CERT_REVOCATION_PARA* para);

    static constexpr DWORD default_timeout = 5000;

    PCCERT_CONTEXT issuer_hint = nullptr;
    std::span<const HCERTSTORE> cert_stores;
    HCERTSTORE crl_store = nullptr;               ///< Null: the "CA" store is searched for CRLs.
    const FILETIME* time_to_use = nullptr;        ///< Null: the present.
    DWORD timeout = default_timeout;              ///< Milliseconds; 0 leaves it to the platform.
    CERT_REVOCATION_CRL_INFO* crl_info = nullptr; ///< Null: no CRLs are to be handed out.
};

/// The fields of CERT_REVOCATION_STATUS that a caller may not know of.
struct FreshnessFields {
    explicit FreshnessFields(CERT_REVOCATION_STATUS& status);

    BOOL* has_freshness_time = nullptr;
    DWORD* freshness_time = nullptr;
};

/// Whether the caller's structure is large enough for all fields that are always written.
[[nodiscard]] bool is_large_enough(const CERT_REVOCATION_STATUS& status);

} // namespace norvane
