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

[[nodiscard]] inline std::vector<Bytes> crls_of(HCERTSTORE store) {
    std::vector<Bytes> found;
    for (PCCRL_CONTEXT at = nullptr;
         (at = CertFindCRLInStore(store, 0, 0, CRL_FIND_ANY, nullptr, at)) != nullptr;)
        found.emplace_back(at->pbCrlEncoded, at->pbCrlEncoded + at->cbCrlEncoded);
    return found;
}

[[nodiscard]] inline std::vector<Bytes> certificates_of(HCERTSTORE store) {
    std::vector<Bytes> found;
    for (PCCERT_CONTEXT at = nullptr; (at = CertEnumCertificatesInStore(store, at)) != nullptr;)
        found.emplace_back(at->pbCertEncoded, at->pbCertEncoded + at->cbCertEncoded);
    return found;
}

[[nodiscard]] inline Retrieved retrieve(const std::string& url, DWORD flags = all_objects,
                                        DWORD timeout_ms = ample_ms,
                                        LPCSTR kind = CONTEXT_OID_CRL) {
    void* store = &store;
    SetLastError(0);
    if (!CryptRetrieveObjectByUrlA(url.c_str(), kind, flags, timeout_ms, &store, nullptr, nullptr,
                                   nullptr, nullptr)) {
        EXPECT_EQ(store, nullptr);
        return failure(GetLastError());
    }
    auto found = kind == CONTEXT_OID_CRL ? crls_of(store) : certificates_of(store);
    EXPECT_TRUE(CertCloseStore(store, 0));
    return objects(std::move(found));
}

[[nodiscard]] inline Retrieved retrieve_certificates(const std::string& url,
                                                     DWORD flags = all_objects) {
    return retrieve(url, flags, ample_ms, CONTEXT_OID_CERTIFICATE);
}

// The same bytes at every call: nobody here looks at the signature.
[[nodiscard]] inline Bytes with_fixed_signature(const CrlBuilder& builder) {
    return sequence(builder.tbs(), Key::ec(0).signature_algorithm(), bit_string(Bytes(64, 1)));
}

// A CRL of a day of January 2026.
[[nodiscard]] inline Bytes crl_of_day(int day, std::string_view issuer = "Issuer",
                                      const std::vector<Bytes>& extensions = {}) {
    const std::string two_digits = {static_cast<char>('0' + day / 10),
                                    static_cast<char>('0' + day % 10)};
    return with_fixed_signature({.issuer = common_name(issuer),
                                 .this_update = utc_time("2601" + two_digits + "000000Z"),
                                 .extensions = extensions});
}

[[nodiscard]] inline std::string text_of(const Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

// With a cache in the folder, and no proxy from outside. `more` are lines of [retrieval].
[[nodiscard]] inline ::testing::AssertionResult
passes_with_cache(const TemporaryFolder& folder, const std::function<void()>& checks,
                  std::string_view more = "") {
    const std::string text = "[retrieval]\ncache_folder = " + (folder.path() / "cache").string() +
                             "\n" + std::string(more);
    return passes_when_configured(text, [&] {
        for (const char* name : {"http_proxy", "all_proxy", "no_proxy", "NORVANE_CACHE_DIR"})
            unsetenv(name);
        checks();
    });
}

} // namespace norvane::testing
