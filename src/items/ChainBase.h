#pragma once

// The objects of a decision: certificate and CRL items, their names, and the caches that own them.

#include "items/CRLItem.h"         // IWYU pragma: export
#include "items/CacheInfo.h"       // IWYU pragma: export
#include "items/CertName.h"        // IWYU pragma: export
#include "items/CertificateItem.h" // IWYU pragma: export
#include "items/ItemCache.h"       // IWYU pragma: export
#include "items/ItemSets.h"        // IWYU pragma: export
