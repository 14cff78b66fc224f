#include "platform/crypto/AllowedHashes.h"

#include "platform/config/Configuration.h"

namespace norvane {

bool is_hash_allowed(ALG_ID hash) noexcept {
    if (hash != CALG_SHA1) {
        return true;
    }
    try {
        return configuration().sha1;
    } catch (...) { // No memory to read it, so there is no permission either.
        return false;
    }
}

} // namespace norvane
