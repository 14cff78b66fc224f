#pragma once

#include "chain/ChainValidator.h"
#include "chain/IssuerCandidates.h"

#include <norvane/wincrypt.h>

namespace norvane {

/// Adds the certificates of all caIssuers URLs (RFC 5280 4.2.2.1) that may be the issuer;
/// `retrieval_flags` is CRYPT_CACHE_ONLY_RETRIEVAL, or 0 to allow the wire. A URL that gives
/// nothing is passed over; what it does give enters the run's cache, whether it matches or not.
///
/// Throws as the accessors of items do for a retrieved certificate, and CAException "time value is
/// too big" for a time-out that the platform cannot be given.
void candidates_from_aia(ChainValidator& chain, const ASN1T_AuthorityInfoAccessSyntax& aia,
                         IssuerCandidateSearch& search, DWORD retrieval_flags);

} // namespace norvane
