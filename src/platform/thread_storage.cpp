#include "platform/failure.h"

#include <array>
#include <atomic>
#include <climits>
#include <concepts>
#include <pthread.h>

namespace {

// An index is the key itself: the C library numbers its keys from 0 to PTHREAD_KEYS_MAX - 1.
static_assert(std::same_as<pthread_key_t, DWORD>);

// The C library need not detect a key that is not in use, hence the record of our own. It also
// keeps foreign keys from being taken for an index.
constinit std::array<std::atomic<bool>, PTHREAD_KEYS_MAX> reserved{};

bool is_reserved(DWORD index) noexcept { return index < reserved.size() && reserved[index]; }

} // namespace

DWORD TlsAlloc() noexcept {
    pthread_key_t key = 0;
    if (pthread_key_create(&key, nullptr) != 0) {
        SetLastError(ERROR_NO_MORE_ITEMS);
        return TLS_OUT_OF_INDEXES;
    }
    reserved[key] = true;
    return key;
}

BOOL TlsFree(DWORD dwTlsIndex) noexcept {
    // Of two threads that free the same index only one may delete the key.
    if (dwTlsIndex >= reserved.size() || !reserved[dwTlsIndex].exchange(false)) {
        return norvane::fail(ERROR_INVALID_PARAMETER);
    }
    pthread_key_delete(dwTlsIndex);
    return TRUE;
}

LPVOID TlsGetValue(DWORD dwTlsIndex) noexcept {
    if (!is_reserved(dwTlsIndex)) {
        return norvane::fail<LPVOID>(ERROR_INVALID_PARAMETER);
    }
    SetLastError(ERROR_SUCCESS);
    return pthread_getspecific(dwTlsIndex);
}

BOOL TlsSetValue(DWORD dwTlsIndex, LPVOID lpTlsValue) noexcept {
    if (!is_reserved(dwTlsIndex)) {
        return norvane::fail(ERROR_INVALID_PARAMETER);
    }
    if (pthread_setspecific(dwTlsIndex, lpTlsValue) != 0) {
        return norvane::fail(ERROR_NOT_ENOUGH_MEMORY);
    }
    return TRUE;
}
