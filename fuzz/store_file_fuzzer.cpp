#include "platform/store/ObjectFile.h"

#include <norvane/wincrypt.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace {

using norvane::ByteView;
using norvane::ObjectFile;
using norvane::ObjectKind;

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

/// Reads every byte, for the sanitizers to see.
void touch(const CRYPT_DATA_BLOB& blob) {
    volatile unsigned sum = 0;
    for (const BYTE byte : std::span(blob.pbData, blob.cbData)) {
        sum = sum + byte;
    }
}

void touch(const CRYPT_BIT_BLOB& bits) {
    require(bits.cUnusedBits < 8);
    touch(CRYPT_DATA_BLOB{bits.cbData, bits.pbData});
}

void touch(const CRYPT_ALGORITHM_IDENTIFIER& algorithm) {
    require(std::string_view(algorithm.pszObjId).find_first_not_of("0123456789.") ==
            std::string_view::npos);
    touch(algorithm.Parameters);
}

/// Decodes each value as an authority key identifier too, whatever it is.
void touch(PCERT_EXTENSION extensions, DWORD count) {
    for (const CERT_EXTENSION& extension : std::span(extensions, count)) {
        touch(CRYPT_ALGORITHM_IDENTIFIER{extension.pszObjId, extension.Value});
        const auto decode = [&](void* structure, DWORD& size) {
            return CryptDecodeObject(X509_ASN_ENCODING, szOID_AUTHORITY_KEY_IDENTIFIER2,
                                     extension.Value.pbData, extension.Value.cbData, 0, structure,
                                     &size);
        };
        DWORD size = 0;
        if (decode(nullptr, size)) {
            const auto structure = std::make_unique<BYTE[]>(size);
            require(decode(structure.get(), size));
            touch(reinterpret_cast<CERT_AUTHORITY_KEY_ID2_INFO*>(structure.get())->KeyId);
        }
    }
}

void touch(const CERT_CONTEXT& certificate) {
    const CERT_INFO& info = *certificate.pCertInfo;
    touch(info.SerialNumber);
    touch(info.SignatureAlgorithm);
    touch(info.Issuer);
    touch(info.Subject);
    touch(info.SubjectPublicKeyInfo.Algorithm);
    touch(info.SubjectPublicKeyInfo.PublicKey);
    touch(info.IssuerUniqueId);
    touch(info.SubjectUniqueId);
    touch(info.rgExtension, info.cExtension);
}

void touch(const CRL_CONTEXT& crl) {
    const CRL_INFO& info = *crl.pCrlInfo;
    require(info.rgCRLEntry == nullptr);
    touch(info.SignatureAlgorithm);
    touch(info.Issuer);
    touch(info.rgExtension, info.cExtension);
}

void add(HCERTSTORE store, const ObjectFile::Object& object) {
    const auto add_encoded = [&](auto add_to_store) {
        return add_to_store(store, X509_ASN_ENCODING, object.bytes.data, object.bytes.length,
                            CERT_STORE_ADD_USE_EXISTING, nullptr);
    };
    if (object.kind == ObjectKind::certificate) {
        add_encoded(CertAddEncodedCertificateToStore);
    } else {
        add_encoded(CertAddEncodedCRLToStore);
    }
}

void walk(HCERTSTORE store) {
    std::vector<PCCERT_CONTEXT> certificates;
    PCCERT_CONTEXT certificate = nullptr;
    while ((certificate = CertEnumCertificatesInStore(store, certificate)) != nullptr) {
        touch(*certificate);
        certificates.push_back(CertDuplicateCertificateContext(certificate));
    }
    PCCRL_CONTEXT crl = nullptr;
    while ((crl = CertFindCRLInStore(store, 0, 0, CRL_FIND_ANY, nullptr, crl)) != nullptr) {
        touch(*crl);
        for (PCCERT_CONTEXT subject : certificates) {
            CRL_ENTRY* entry = nullptr;
            require(CertFindCertificateInCRL(subject, crl, 0, nullptr, &entry));
            if (entry != nullptr) {
                touch(entry->SerialNumber);
                touch(entry->rgExtension, entry->cExtension);
            }
        }
    }
    for (PCCERT_CONTEXT held : certificates) {
        CertFreeCertificateContext(held);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ObjectFile file({data, static_cast<std::uint32_t>(size)});
    require(!file.objects().empty() || !file.faults().empty());
    HCERTSTORE store = CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr);
    for (const ObjectFile::Object& object : file.objects()) {
        add(store, object);
    }
    walk(store);
    // No context may be left that keeps the store.
    require(CertCloseStore(store, CERT_CLOSE_STORE_CHECK_FLAG));
    return 0;
}
