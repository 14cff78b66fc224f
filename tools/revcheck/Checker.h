#pragma once

#include "ObjectInput.h"
#include "Options.h"

#include <norvane/wincrypt.h>

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace norvane {

enum class Status : std::uint8_t { good, revoked, no_check };

/// What one call of the platform's revocation check has said about the certificate that it looked
/// at last.
struct Verdict {
    Status status = Status::no_check;
    DWORD error = 0;           ///< 0 if the certificate is good
    DWORD process_failure = 0; ///< why the check was given up, 0 if it was not
    DWORD reason_code = 0;     ///< of RFC 5280 5.3.1, if it is revoked
    std::optional<std::uint32_t> freshness_seconds;
    CrlHandle base_crl;               ///< null: none was handed out
    CrlHandle delta_crl;              ///< null: none was handed out
    const CRL_ENTRY* entry = nullptr; ///< of one of the CRLs, as long as those live
    bool entry_in_delta = false;
    FILETIME time{}; ///< of the check
};

/// The verdict about the last certificate looked at, and its place. Those before it are good.
struct CallResult {
    std::size_t index = 0;
    Verdict verdict;
};

/// The verdict about each certificate that was looked at. About those that are good and not the
/// last nothing else is known.
[[nodiscard]] std::vector<Verdict> verdicts_of(CallResult result);

/// The stores in which the check looks for certificates and for CRLs.
struct Stores {
    std::vector<StoreHolder> certs; ///< the caller's
    StoreHolder crls;               ///< the caller's; null: the system's CA store serves
    CertificateHandle issuer;       ///< the hint; may be null
};

/// Asks the platform as any application does.
class Checker {
  public:
    /// Both must outlive the checker.
    Checker(const Options& options, const Stores& stores);

    /// Checks the certificates, of which there is at least one, in one call, as of a moment or,
    /// without one, of the present.
    [[nodiscard]] CallResult check(std::span<const PCCERT_CONTEXT> certificates,
                                   const std::optional<FILETIME>& moment) const;

  private:
    const Options& options_;
    const Stores& stores_;
};

} // namespace norvane
