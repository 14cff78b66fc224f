#pragma once

#include "asn1/MessageBuffer.h"
#include "asn1/Time.h"
#include "chain/Path.h"
#include "chain/VerifiedCrls.h"
#include "items/ChainBase.h"
#include "store/StoreHandle.h"
#include "values/Date.h"

#include <norvane/wincrypt.h>

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace norvane {

// Bits of chain_flags.

/// Nothing is retrieved over the wire.
inline constexpr std::uint32_t chain_cache_only = 0x80000000;
/// All retrievals of a run share one time-out.
inline constexpr std::uint32_t chain_accumulative_timeout = 0x08000000;
/// Which members of a path are checked for revocation: the three values under the mask.
inline constexpr std::uint32_t chain_revocation_mask = 0x70000000;
inline constexpr std::uint32_t chain_revocation_end_certificate = 0x10000000;
inline constexpr std::uint32_t chain_revocation_whole_path = 0x20000000;
inline constexpr std::uint32_t chain_revocation_all_but_root = 0x40000000;
/// Links are tested when a path is complete, and not while it is searched.
inline constexpr std::uint32_t ChainFlagDeferSignatureCheck = 0x40;
/// Issuers are only retrieved from the platform's cache of URLs.
inline constexpr std::uint32_t ChainFlagCacheOnlyUrl = 0x04;

/// The working state of one revocation decision about one certificate: it is made, filled, run
/// once, read and destroyed. The caches own every item, and everything else holds plain pointers
/// into them. It belongs to one thread.
struct ChainValidator {
    ChainValidator();
    ChainValidator(const ChainValidator&) = delete;
    ChainValidator& operator=(const ChainValidator&) = delete;
    ~ChainValidator() = default;

    ItemCache item_cache;        ///< Every certificate met in this run.
    CrlItemCache crl_item_cache; ///< Every CRL met in this run.
    VerifiedCrls verified_crls;

    /// Certificates and CRLs of the caches that are known without any store.
    std::set<ItemCache::value_type*> extra_certificates;
    CrlItemSet extra_crls;

    StoreHandleSet cert_stores;
    StoreHandleSet crl_stores;

    std::uint32_t chain_flags = chain_revocation_whole_path;
    /// Time for one retrieval, or for all with chain_accumulative_timeout; 0 leaves it to the
    /// platform.
    CACMPT_Date retrieval_timeout;
    /// Spent so far under chain_accumulative_timeout; always 0 without.
    CACMPT_Date timeout_spent;
    /// The URLs of CRLs tried in the current pass.
    std::set<std::string> retrieved_urls;

    /// Purposes that the end of a path must have, in the sense of has_ext_key_usages.
    const CERT_USAGE_MATCH* required_ekus = nullptr;

    ASN1BEREncodeBuffer encode_buffer; ///< The text of verify_time lies in its memory.
    std::string_view verify_time_text;
    /// The moment at which everything is validated, in whole seconds of UTC.
    ASN1CUTCTime verify_time;

    Chain path;                     ///< The path under construction.
    std::optional<Chain> best_path; ///< The one that failed least badly so far.
    /// Certificates whose revocation is being decided, which prevents cycles.
    CertificateItemSet revocation_in_progress;
};

} // namespace norvane
