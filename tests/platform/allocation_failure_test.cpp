#include "platform/FailingNew.h"
#include "platform/StoreMaterial.h"

namespace norvane::testing {
namespace {

// Uses the stores with this many allocations. Returns the last error of what failed, or 0.
DWORD use_stores(const Bytes& encoded, const Bytes& list, long allocations) {
    SetLastError(0);
    set_allocations_left(allocations);
    HCERTSTORE memory = CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr);
    HCERTSTORE collection = CertOpenStore(CERT_STORE_PROV_COLLECTION, 0, 0, 0, nullptr);
    PCCERT_CONTEXT loose =
        CertCreateCertificateContext(X509_ASN_ENCODING, encoded.data(), size_of(encoded));
    PCCRL_CONTEXT crl = CertCreateCRLContext(X509_ASN_ENCODING, list.data(), size_of(list));
    CRL_ENTRY* entry = nullptr;
    PCCERT_CONTEXT found = nullptr;
    const bool done =
        memory != nullptr && collection != nullptr && loose != nullptr && crl != nullptr &&
        CertAddCertificateContextToStore(memory, loose, CERT_STORE_ADD_ALWAYS, nullptr) &&
        CertAddEncodedCRLToStore(memory, X509_ASN_ENCODING, list.data(), size_of(list),
                                 CERT_STORE_ADD_ALWAYS, nullptr) &&
        CertAddStoreToCollection(collection, memory, 0, 0) &&
        (found = CertEnumCertificatesInStore(collection, nullptr)) != nullptr &&
        CertFindCertificateInCRL(found, crl, 0, nullptr, &entry);
    const DWORD error = done ? 0 : GetLastError();
    set_allocations_left(-1);
    EXPECT_EQ(entry != nullptr, done);
    CertFreeCertificateContext(found);
    CertFreeCertificateContext(loose);
    CertFreeCRLContext(crl);
    CertCloseStore(collection, 0);
    CertCloseStore(memory, 0);
    return error;
}

TEST(Stores, TellEveryFailureToAllocate) {
    const Bytes encoded = certificate("A", hex("01"));
    const Bytes list =
        CrlBuilder{.entries = {{.serial = hex("01"), .extensions = {reason_code(1)}}}}.sign(
            Key::ec(0));
    long allocations = 0;
    for (DWORD error = 1; error != 0; ++allocations) {
        error = use_stores(encoded, list, allocations);
        ASSERT_TRUE(error == 0 || error == ERROR_NOT_ENOUGH_MEMORY) << allocations << ": " << error;
    }
    EXPECT_GT(allocations, 20);
}

} // namespace
} // namespace norvane::testing
