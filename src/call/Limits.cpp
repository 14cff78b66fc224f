#include "call/Limits.h"

#include "values/PkivKey.h"
#include "values/ProcessFailure.h"

#include <norvane/wincrypt.h>

#include <atomic>
#include <memory>

namespace norvane {
namespace {

struct Limit {
    Resource resource;
    LPCWSTR value_name;
    std::uint64_t default_amount;
};

// An ordinary question, through a dozen CAs, takes some dozens of verifications and a handful of
// retrievals. Its largest costs are CRLs, of 50 MB for a million entries.
constexpr std::array<Limit, resource_count> limits{{
    {Resource::verifications, NORVANE_W("MaxSignatureVerifications"), 10'000},
    {Resource::hashed_bytes, NORVANE_W("MaxHashedBytes"), std::uint64_t{16} << 30},
    {Resource::shown_objects, NORVANE_W("MaxShownObjects"), 5'000'000},
    {Resource::retrievals, NORVANE_W("MaxRetrievals"), 64},
    {Resource::retrieval_time, NORVANE_W("MaxRetrievalMilliseconds"), 60'000},
}};

void require_health(LSTATUS status) {
    require_no_process_error(static_cast<DWORD>(status), source_module::chain_validator, __LINE__);
}

/// The value, or the default if there is none, or one that is no number.
std::uint64_t read_limit(HKEY key, const Limit& limit) {
    std::uint64_t amount = 0; // A value of 32 bits fills the lower half.
    DWORD type = 0;
    DWORD size = sizeof amount;
    const LSTATUS status = RegQueryValueExW(key, limit.value_name, nullptr, &type,
                                            reinterpret_cast<BYTE*>(&amount), &size);
    require_health(status);
    const bool is_number = type == REG_DWORD || type == REG_QWORD;
    return status == ERROR_SUCCESS && is_number ? amount : limit.default_amount;
}

Quotas read_limits() {
    Quotas quotas;
    for (const Limit& limit : limits) {
        quotas[limit.resource] = limit.default_amount;
    }
    HKEY key = nullptr;
    const LSTATUS opened = RegOpenKeyExW(HKEY_LOCAL_MACHINE, pkiv_key, 0, pkiv_key_access, &key);
    require_health(opened);
    if (opened == ERROR_SUCCESS) {
        struct CloseKey {
            HKEY key;
            ~CloseKey() { RegCloseKey(key); }
        } const close{key};
        for (const Limit& limit : limits) {
            quotas[limit.resource] = read_limit(key, limit);
        }
    }
    return quotas;
}

} // namespace

const Quotas& configured_quotas() {
    // Not a static of a function, which a child of fork would wait for if another thread made it.
    // Threads that find nothing all read the same, and the first to be ready stays.
    constinit static std::atomic<const Quotas*> configured = nullptr;
    const Quotas* quotas = configured.load(std::memory_order_acquire);
    if (quotas == nullptr) {
        auto read = std::make_unique<const Quotas>(read_limits());
        if (configured.compare_exchange_strong(quotas, read.get(), std::memory_order_acq_rel)) {
            quotas = read.release();
        }
    }
    return *quotas;
}

} // namespace norvane
