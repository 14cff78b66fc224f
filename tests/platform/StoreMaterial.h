// Contexts and stores for tests, which are given back at the end of a scope.
#pragma once

#include "support/CertificateBuilder.h"
#include "support/CrlBuilder.h"

#include <norvane/wincrypt.h>

#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

namespace norvane::testing {

inline DWORD size_of(const Bytes& bytes) { return static_cast<DWORD>(bytes.size()); }
inline Bytes bytes_of(const CRYPT_DATA_BLOB& blob) {
    return {blob.pbData, blob.pbData + blob.cbData};
}

struct FreeContext {
    void operator()(PCCERT_CONTEXT context) const {
        EXPECT_TRUE(CertFreeCertificateContext(context));
    }
    void operator()(PCCRL_CONTEXT context) const { EXPECT_TRUE(CertFreeCRLContext(context)); }
};
using CertificateContext = std::unique_ptr<const CERT_CONTEXT, FreeContext>;
using CrlContext = std::unique_ptr<const CRL_CONTEXT, FreeContext>;

inline CertificateContext certificate_context(const Bytes& bytes) {
    return CertificateContext(
        CertCreateCertificateContext(X509_ASN_ENCODING, bytes.data(), size_of(bytes)));
}
inline CrlContext crl_context(const Bytes& bytes) {
    return CrlContext(CertCreateCRLContext(X509_ASN_ENCODING, bytes.data(), size_of(bytes)));
}

// A certificate with this commonName, and with this subject key identifier if there is one.
inline Bytes certificate(std::string_view name, const std::optional<Bytes>& key_id = {}) {
    CertificateBuilder builder{.subject = common_name(name)};
    if (key_id)
        builder.extensions = {subject_key_identifier(*key_id)};
    return builder.sign(Key::ec(0));
}
inline Bytes crl(std::string_view issuer) {
    return CrlBuilder{.issuer = common_name(issuer)}.sign(Key::ec(0));
}

class OpenStore {
  public:
    explicit OpenStore(HCERTSTORE handle) : handle_(handle) {}
    OpenStore(OpenStore&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    OpenStore& operator=(OpenStore&&) = delete;
    ~OpenStore() { EXPECT_TRUE(CertCloseStore(handle_, 0)); }

    [[nodiscard]] static OpenStore memory(DWORD flags = 0) {
        return OpenStore(CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, flags, nullptr));
    }
    [[nodiscard]] static OpenStore collection() {
        return OpenStore(CertOpenStore(CERT_STORE_PROV_COLLECTION, 0, 0, 0, nullptr));
    }
    [[nodiscard]] static OpenStore system(const std::u16string& name, DWORD flags = 0x1C000) {
        return OpenStore(CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, flags, name.c_str()));
    }

    [[nodiscard]] HCERTSTORE get() const { return handle_; }

    BOOL add(const Bytes& bytes, DWORD disposition = CERT_STORE_ADD_ALWAYS) const {
        return CertAddEncodedCertificateToStore(handle_, X509_ASN_ENCODING, bytes.data(),
                                                size_of(bytes), disposition, nullptr);
    }
    BOOL add_crl(const Bytes& bytes, DWORD disposition = CERT_STORE_ADD_ALWAYS) const {
        return CertAddEncodedCRLToStore(handle_, X509_ASN_ENCODING, bytes.data(), size_of(bytes),
                                        disposition, nullptr);
    }

    // The encoded certificates, all or those with a key identifier, and CRLs, in their order.
    [[nodiscard]] std::vector<Bytes> certificates(const std::optional<Bytes>& key_id = {}) const {
        Bytes id = key_id.value_or(Bytes{});
        const CRYPT_HASH_BLOB para{size_of(id), id.data()};
        std::vector<Bytes> found;
        PCCERT_CONTEXT context = nullptr;
        while ((context = CertFindCertificateInStore(
                    handle_, 0x10001, 0, key_id ? CERT_FIND_KEY_IDENTIFIER : CERT_FIND_ANY, &para,
                    context)) != nullptr)
            found.emplace_back(context->pbCertEncoded,
                               context->pbCertEncoded + context->cbCertEncoded);
        EXPECT_EQ(GetLastError(), CRYPT_E_NOT_FOUND);
        return found;
    }
    [[nodiscard]] std::vector<Bytes> crls() const {
        std::vector<Bytes> found;
        PCCRL_CONTEXT context = nullptr;
        while ((context = CertFindCRLInStore(handle_, 0x10001, 0, CRL_FIND_ANY, nullptr,
                                             context)) != nullptr)
            found.emplace_back(context->pbCrlEncoded,
                               context->pbCrlEncoded + context->cbCrlEncoded);
        EXPECT_EQ(GetLastError(), CRYPT_E_NOT_FOUND);
        return found;
    }

  private:
    HCERTSTORE handle_;
};

} // namespace norvane::testing
