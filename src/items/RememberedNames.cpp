#include "items/RememberedNames.h"

#include "items/CertName.h"

#include <string_view>
#include <utility>

namespace norvane {
namespace {

constinit thread_local RememberedNames* outermost = nullptr;

} // namespace

RememberedNames::RememberedNames() noexcept {
    if (outermost == nullptr) {
        outermost = this;
    }
}

RememberedNames::~RememberedNames() {
    if (outermost == this) {
        outermost = nullptr;
    }
}

const CACMPT_BLOB& RememberedNames::form_of(ByteView encoded_name, CACMPT_BLOB& own) {
    const std::string_view key(reinterpret_cast<const char*>(encoded_name.data),
                               encoded_name.length);
    if (outermost != nullptr) {
        const auto known = outermost->forms_.find(key);
        if (known != outermost->forms_.end()) {
            return known->second;
        }
    }
    own = canonical_name({encoded_name.data, encoded_name.length});
    const std::size_t octets = key.size() + own.length;
    if (outermost == nullptr || outermost->octets_ + octets > max_octets) {
        return own;
    }
    outermost->octets_ += octets;
    return outermost->forms_.emplace(key, std::move(own)).first->second;
}

} // namespace norvane
