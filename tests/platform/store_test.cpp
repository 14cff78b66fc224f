#include "platform/StoreMaterial.h"

namespace norvane::testing {
namespace {

const Bytes a = certificate("A", hex("01"));
const Bytes b = certificate("B");
const Bytes c = certificate("C", hex("01"));

using Encoded = std::vector<Bytes>;

// What a call that fails leaves as the last error.
template <class Call>
DWORD error_of(Call call) {
    SetLastError(0);
    EXPECT_FALSE(call());
    return GetLastError();
}

BOOL join(const OpenStore& whole, const OpenStore& part, DWORD flags = 0, DWORD priority = 0) {
    return CertAddStoreToCollection(whole.get(), part.get(), flags, priority);
}

TEST(Store, LivesUntilClosedAsOftenAsOpenedAndIsKeptByItsContexts) {
    HCERTSTORE handle = CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr);
    EXPECT_EQ(CertDuplicateStore(handle), handle);
    EXPECT_TRUE(CertCloseStore(handle, CERT_CLOSE_STORE_CHECK_FLAG));
    PCCERT_CONTEXT added = nullptr;
    ASSERT_TRUE(CertAddEncodedCertificateToStore(handle, X509_ASN_ENCODING, a.data(), size_of(a),
                                                 CERT_STORE_ADD_NEW, &added));
    const CertificateContext held(CertDuplicateCertificateContext(added));
    CertFreeCertificateContext(added);
    EXPECT_EQ(error_of([=] { return CertCloseStore(handle, CERT_CLOSE_STORE_CHECK_FLAG); }),
              CRYPT_E_PENDING_CLOSE);
    EXPECT_EQ(error_of([=] { return CertCloseStore(handle, 0); }), ERROR_INVALID_HANDLE);

    const OpenStore again(CertDuplicateStore(held->hCertStore));
    EXPECT_EQ(again.get(), handle);
    EXPECT_EQ(again.certificates(), Encoded{a});
}

TEST(Store, TellsEqualObjectsAndFindsNoneWithoutAnIdentifierByAnEmptyOne) {
    const Bytes empty = certificate("empty", Bytes{});
    const OpenStore store = OpenStore::memory();
    for (const Bytes& encoded : {c, b, a, empty, c})
        EXPECT_TRUE(store.add(encoded));
    EXPECT_EQ(error_of([&] { return store.add(a, CERT_STORE_ADD_NEW); }), CRYPT_E_EXISTS);
    EXPECT_TRUE(store.add(a, CERT_STORE_ADD_USE_EXISTING));
    EXPECT_EQ(store.certificates(), (Encoded{c, b, a, empty, c}));
    EXPECT_EQ(store.certificates(Bytes{}), Encoded{empty});
}

TEST(CollectionStore, ShowsEachStoreOnceInTheOrderOfPriority) {
    const OpenStore first = OpenStore::memory();
    const OpenStore second = OpenStore::memory();
    const OpenStore inner = OpenStore::collection();
    const OpenStore outer = OpenStore::collection();
    first.add(a);
    second.add(b);
    EXPECT_TRUE(join(inner, second) && join(inner, first));
    EXPECT_TRUE(join(outer, OpenStore::memory()) && join(outer, first) && join(outer, first));
    EXPECT_TRUE(join(outer, inner, 0, 1) && join(outer, second));
    EXPECT_EQ(outer.certificates(), (Encoded{b, a}));
    first.add(c);
    EXPECT_EQ(outer.certificates(hex("01")), (Encoded{a, c}));
    const CertificateContext found(CertEnumCertificatesInStore(outer.get(), nullptr));
    EXPECT_EQ(found->hCertStore, second.get());

    EXPECT_EQ(error_of([&] { return join(inner, outer); }), E_INVALIDARG) << "a circle";
    EXPECT_EQ(error_of([&] { return join(outer, outer); }), E_INVALIDARG) << "a circle";
}

TEST(CollectionStore, KeepsItsStoresAndPassesAdditionsToTheOneThatTakesThem) {
    const OpenStore collection = OpenStore::collection();
    EXPECT_EQ(error_of([&] { return collection.add(a); }), E_ACCESSDENIED);
    {
        const OpenStore shown = OpenStore::memory();
        const OpenStore fixed = OpenStore::memory(CERT_STORE_READONLY_FLAG);
        const OpenStore taking = OpenStore::memory();
        EXPECT_TRUE(join(collection, shown));
        EXPECT_TRUE(join(collection, fixed, CERT_PHYSICAL_STORE_ADD_ENABLE_FLAG));
        EXPECT_TRUE(join(collection, taking, CERT_PHYSICAL_STORE_ADD_ENABLE_FLAG));
        EXPECT_TRUE(collection.add(a));
        EXPECT_EQ(taking.certificates(), Encoded{a});
    }
    EXPECT_EQ(collection.certificates(), Encoded{a});
}

} // namespace
} // namespace norvane::testing
