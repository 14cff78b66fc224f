// Retrievals for tests, with all that a caller can tell of them.
#pragma once

#include "support/CertificateBuilder.h"
#include "support/ConfiguredProcess.h"
#include "support/CrlBuilder.h"
#include "support/HttpServer.h"

#include <norvane/wincrypt.h>

#include <chrono>
#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace norvane::testing {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr DWORD all_objects = CRYPT_RETRIEVE_MULTIPLE_OBJECTS;
constexpr DWORD cached_objects = all_objects | CRYPT_CACHE_ONLY_RETRIEVAL;
constexpr DWORD ample_ms = 20'000;

struct Retrieved {
    DWORD error = 0;
    std::vector<Bytes> objects;

    bool operator==(const Retrieved&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Retrieved& retrieved) {
        return out << "error " << retrieved.error << ", " << retrieved.objects.size() << " objects";
    }
};

[[nodiscard]] inline Retrieved objects(std::vector<Bytes> list) { return {0, std::move(list)}; }
[[nodiscard]] inline Retrieved failure(DWORD error) { return {error, {}}; }

// The CRLs of a store, then its certificates.
[[nodiscard]] inline std::vector<Bytes> content_of(HCERTSTORE store) {
    std::vector<Bytes> found;
    for (PCCRL_CONTEXT at = nullptr;
         (at = CertFindCRLInStore(store, 0, 0, CRL_FIND_ANY, nullptr, at)) != nullptr;)
        found.emplace_back(at->pbCrlEncoded, at->pbCrlEncoded + at->cbCrlEncoded);
    for (PCCERT_CONTEXT at = nullptr; (at = CertEnumCertificatesInStore(store, at)) != nullptr;)
        found.emplace_back(at->pbCertEncoded, at->pbCertEncoded + at->cbCertEncoded);
    return found;
}

// A store or context, which the caller frees; null with a last error.
[[nodiscard]] inline void* retrieve_handle(const std::string& url, DWORD flags = all_objects,
                                           DWORD timeout_ms = ample_ms,
                                           LPCSTR kind = CONTEXT_OID_CRL) {
    void* handle = &handle;
    SetLastError(0);
    const BOOL done = CryptRetrieveObjectByUrlA(url.c_str(), kind, flags, timeout_ms, &handle,
                                                nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(handle != nullptr, done != FALSE);
    return handle;
}

[[nodiscard]] inline Retrieved retrieve(const std::string& url, DWORD flags = all_objects,
                                        DWORD timeout_ms = ample_ms,
                                        LPCSTR kind = CONTEXT_OID_CRL) {
    void* const store = retrieve_handle(url, flags, timeout_ms, kind);
    if (store == nullptr)
        return failure(GetLastError());
    auto found = content_of(store);
    EXPECT_TRUE(CertCloseStore(store, 0));
    return objects(std::move(found));
}

// A CRL of a date, as in 260131. The same bytes at every call: nobody looks at the signature.
[[nodiscard]] inline Bytes crl_of(int date, std::string_view issuer = "Issuer",
                                  const std::vector<Bytes>& extensions = {}) {
    const CrlBuilder builder{.issuer = common_name(issuer),
                             .this_update = utc_time(std::to_string(date) + "000000Z"),
                             .extensions = extensions};
    return sequence(builder.tbs(), Key::ec(0).signature_algorithm(), bit_string(Bytes(64, 1)));
}

[[nodiscard]] inline std::string text_of(const Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

[[nodiscard]] inline HttpReply reply_of(const Bytes& body) { return http_reply(text_of(body)); }

// With a cache in the folder, no proxy from outside and no memory of failures. `more` are lines of
// [retrieval], which override these.
[[nodiscard]] inline ::testing::AssertionResult
passes_with_cache(const std::function<void()>& checks, std::string_view more = "",
                  const TemporaryFolder& folder = TemporaryFolder()) {
    const std::string text = "[retrieval]\ncache_folder = " + (folder.path() / "cache").string() +
                             "\nfailure_memory = 0s\n" + std::string(more);
    return passes_when_configured(text, [&] {
        for (const char* name : {"http_proxy", "all_proxy", "no_proxy", "NORVANE_CACHE_DIR"})
            unsetenv(name);
        checks();
    });
}

} // namespace norvane::testing
