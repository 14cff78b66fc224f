#pragma once

#include <cstdint>

namespace norvane {

// Input of the fuzzer of verdicts: an octet of modes, and objects, each with its kind in an octet
// and its length in two before it, the lower octet first.

/// What an object is: its role, and what it is taken for.
enum class VerdictObject : std::uint8_t {
    subject,            ///< a certificate that is asked about
    issuer_hint,        ///< the last one counts
    root,               ///< in store "Root"
    ca_certificate,     ///< in store "CA"
    ca_crl,             ///< in store "CA"
    caller_certificate, ///< in a store of the caller
    caller_crl,         ///< in the caller's store of CRLs
    served_certificate, ///< what every URL delivers
    served_crl,
    count,
};

enum VerdictMode : std::uint8_t {
    verdict_cache_only = 1,
    verdict_accumulative = 2,
    verdict_with_crl_store = 4,
    verdict_with_crl_info = 8,
    verdict_without_parameters = 16,
    verdict_nothing_cached = 32,
};

} // namespace norvane
