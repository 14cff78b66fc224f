#pragma once

// Signatures: their verification, and the search for algorithms and providers.

#include "crypto/OidInfoLookup.h"   // IWYU pragma: export
#include "crypto/ProviderLookup.h"  // IWYU pragma: export
#include "crypto/VerifySignature.h" // IWYU pragma: export
