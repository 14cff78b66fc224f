#include "chain/Retrieval.h"

#include "call/Question.h"

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace norvane {
namespace {

using std::chrono::milliseconds;

RetrievedStore ask_platform(const std::string& url, LPCSTR kind, DWORD flags, DWORD timeout) {
    HCERTSTORE store = nullptr;
    const BOOL retrieved = platform_answer(
        [&] {
            return CryptRetrieveObjectByUrlA(url.c_str(), kind,
                                             flags | CRYPT_RETRIEVE_MULTIPLE_OBJECTS, timeout,
                                             &store, nullptr, nullptr, nullptr, nullptr);
        },
        source_module::chain, __LINE__);
    if (retrieved == FALSE) {
        SetLastError(0);
    }
    return RetrievedStore(store);
}

/// The time-out, unless the question has less left. 0 stays, since the platform has a limit of its
/// own for it.
DWORD within_quota(DWORD timeout) {
    constexpr milliseconds least{1};
    const milliseconds left = std::max(retrieval_time_left(), least);
    return static_cast<DWORD>(std::min<milliseconds::rep>(timeout, left.count()));
}

} // namespace

RetrievedStore retrieve_store(const std::string& url, LPCSTR kind, DWORD flags, DWORD timeout) {
    if ((flags & CRYPT_CACHE_ONLY_RETRIEVAL) != 0) {
        return ask_platform(url, kind, flags, timeout);
    }
    charge(Resource::retrievals);
    charge(Resource::retrieval_time);
    const ULONGLONG start = GetTickCount64();
    RetrievedStore store = ask_platform(url, kind, flags, within_quota(timeout));
    charge(Resource::retrieval_time, GetTickCount64() - start);
    return store;
}

} // namespace norvane
