#include "platform/crypto/AllowedHashes.h"

#include "platform/config/Configuration.h"

namespace norvane {

bool is_hash_allowed(ALG_ID hash) { return hash != CALG_SHA1 || configuration().sha1; }

} // namespace norvane
