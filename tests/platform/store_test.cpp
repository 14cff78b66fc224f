#include "platform/StoreMaterial.h"

#include <functional>
#include <string>

namespace norvane::testing {
namespace {

const Bytes a = certificate("A", hex("01"));
const Bytes b = certificate("B", hex("02"));
const Bytes c = certificate("C", hex("01"));
const Bytes plain = certificate("no identifier");

using Encoded = std::vector<Bytes>;

// What a call that fails leaves as the last error.
template <class Call>
DWORD error_of(Call call) {
    SetLastError(0);
    EXPECT_FALSE(call());
    return GetLastError();
}

TEST(Store, HandlesAscendInTheOrderOfOpening) {
    const OpenStore root = OpenStore::memory();
    HCERTSTORE last = root.get();
    for (int i = 0; i < 100; ++i) {
        const OpenStore store = i % 2 == 0 ? OpenStore::memory() : OpenStore::collection();
        EXPECT_GT(store.get(), last);
        last = store.get();
    }
}

TEST(Store, ChecksHowItIsOpened) {
    const auto open = [](LPCSTR provider, DWORD flags, const void* para) {
        return [=] { return CertOpenStore(provider, 0, 0, flags, para); };
    };
    constexpr DWORD both = CERT_STORE_CREATE_NEW_FLAG | CERT_STORE_OPEN_EXISTING_FLAG;
    const LPCSTR memory = CERT_STORE_PROV_MEMORY;
    const LPCSTR system = CERT_STORE_PROV_SYSTEM_W;
    EXPECT_EQ(error_of(open(nullptr, 0, nullptr)), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(error_of(open("Memory", 0, nullptr)), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(error_of(open(memory, CERT_STORE_OPEN_EXISTING_FLAG, nullptr)), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(error_of(open(memory, CERT_SYSTEM_STORE_CURRENT_USER, nullptr)), E_INVALIDARG);
    EXPECT_EQ(error_of(open(memory, 0x10, nullptr)), E_INVALIDARG);
    EXPECT_EQ(error_of(open(memory, both, nullptr)), E_INVALIDARG);
    EXPECT_EQ(error_of(open(system, 0x1C000, nullptr)), E_INVALIDARG);
    EXPECT_EQ(error_of(open(system, 0x1C000, u"")), E_INVALIDARG);
}

TEST(Store, RefusesHandlesThatAreNotOpen) {
    const OpenStore other = OpenStore::memory();
    HCERTSTORE closed = OpenStore::memory().get();
    PCCERT_CONTEXT added = nullptr;
    for (HCERTSTORE handle : {closed, static_cast<HCERTSTORE>(&added)}) {
        const std::function<bool()> calls[] = {
            [=] { return CertDuplicateStore(handle) != nullptr; },
            [=] { return CertCloseStore(handle, 0); },
            [&] { return CertAddStoreToCollection(handle, other.get(), 0, 0); },
            [&] { return CertAddStoreToCollection(other.get(), handle, 0, 0); },
            [=] { return CertEnumCertificatesInStore(handle, nullptr) != nullptr; },
            [=] { return CertFindCRLInStore(handle, 0, 0, 0, nullptr, nullptr) != nullptr; },
            [=] {
                return CertAddEncodedCertificateToStore(handle, X509_ASN_ENCODING, a.data(),
                                                        size_of(a), 4, nullptr);
            }};
        for (const auto& call : calls)
            EXPECT_EQ(error_of(call), ERROR_INVALID_HANDLE);
    }
    EXPECT_EQ(CertDuplicateStore(nullptr), nullptr);
    EXPECT_TRUE(CertCloseStore(nullptr, 0));
    EXPECT_EQ(error_of([&] { return CertCloseStore(other.get(), 1); }), E_INVALIDARG);
}

TEST(Store, LivesUntilClosedAsOftenAsOpened) {
    HCERTSTORE handle = CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr);
    EXPECT_EQ(CertDuplicateStore(handle), handle);
    EXPECT_TRUE(CertCloseStore(handle, CERT_CLOSE_STORE_CHECK_FLAG));
    {
        const OpenStore last(handle);
        EXPECT_TRUE(last.add(a));
    }
    EXPECT_EQ(error_of([=] { return CertCloseStore(handle, 0); }), ERROR_INVALID_HANDLE);
}

TEST(Store, IsKeptByItsContexts) {
    HCERTSTORE handle = CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr);
    PCCERT_CONTEXT added = nullptr;
    ASSERT_TRUE(CertAddEncodedCertificateToStore(handle, X509_ASN_ENCODING, a.data(), size_of(a),
                                                 CERT_STORE_ADD_NEW, &added));
    const CertificateContext held(CertDuplicateCertificateContext(added));
    CertFreeCertificateContext(added);
    EXPECT_EQ(error_of([=] { return CertCloseStore(handle, CERT_CLOSE_STORE_CHECK_FLAG); }),
              CRYPT_E_PENDING_CLOSE);
    EXPECT_EQ(error_of([=] { return CertCloseStore(handle, 0); }), ERROR_INVALID_HANDLE);

    EXPECT_EQ(bytes_of({held->cbCertEncoded, held->pbCertEncoded}), a);
    const OpenStore again(CertDuplicateStore(held->hCertStore));
    EXPECT_EQ(again.get(), handle);
    EXPECT_EQ(again.certificates(), Encoded{a});
}

TEST(Store, AddsByDisposition) {
    const struct {
        DWORD disposition;
        DWORD error;
        std::size_t count; // of equal objects, when one was there
    } cases[] = {{CERT_STORE_ADD_NEW, CRYPT_E_EXISTS, 1},
                 {CERT_STORE_ADD_USE_EXISTING, 0, 1},
                 {CERT_STORE_ADD_REPLACE_EXISTING, 0, 1},
                 {CERT_STORE_ADD_ALWAYS, 0, 2},
                 {0, E_INVALIDARG, 1},
                 {5, E_INVALIDARG, 1}};
    const Bytes list = crl("A");
    const CertificateContext loose = certificate_context(a);
    for (const auto& item : cases) {
        const OpenStore store = OpenStore::memory(CERT_STORE_CREATE_NEW_FLAG);
        EXPECT_TRUE(store.add(a, CERT_STORE_ADD_NEW));
        EXPECT_TRUE(store.add_crl(list, CERT_STORE_ADD_NEW));
        SetLastError(0);
        EXPECT_EQ(store.add_crl(list, item.disposition), item.error == 0);
        EXPECT_EQ(GetLastError(), item.error);
        PCCERT_CONTEXT added = loose.get();
        EXPECT_EQ(
            CertAddCertificateContextToStore(store.get(), loose.get(), item.disposition, &added),
            item.error == 0);
        EXPECT_EQ(GetLastError(), item.error);
        EXPECT_EQ(added != nullptr && added->hCertStore == store.get(), item.error == 0);
        CertFreeCertificateContext(added);
        EXPECT_EQ(store.certificates(), Encoded(item.count, a));
        EXPECT_EQ(store.crls(), Encoded(item.count, list));
    }
}

TEST(Store, RefusesWhatIsMalformedOrNotAllowed) {
    const OpenStore store = OpenStore::memory();
    EXPECT_EQ(error_of([&] { return store.add(hex("3000")); }), CRYPT_E_ASN1_EOD);
    EXPECT_EQ(error_of([&] { return store.add_crl(a); }), CRYPT_E_ASN1_BADTAG);
    PCCERT_CONTEXT added = nullptr;
    EXPECT_EQ(
        error_of([&] { return CertAddCertificateContextToStore(store.get(), nullptr, 4, &added); }),
        E_INVALIDARG);
    EXPECT_EQ(store.certificates(), Encoded{});

    const OpenStore read_only = OpenStore::memory(CERT_STORE_READONLY_FLAG);
    EXPECT_EQ(error_of([&] { return read_only.add(a); }), E_ACCESSDENIED);
    EXPECT_EQ(read_only.certificates(), Encoded{});
}

TEST(Store, FindsByKeyIdentifierOnlyThoseThatHaveIt) {
    const Bytes empty = certificate("empty", Bytes{});
    const Bytes malformed =
        CertificateBuilder{.extensions = {extension("2.5.29.14", Critical::no, hex("0402 01"))}}
            .sign(Key::ec(0));
    const OpenStore store = OpenStore::memory();
    for (const Bytes& encoded : {c, plain, b, a, malformed, empty, c})
        EXPECT_TRUE(store.add(encoded));
    EXPECT_EQ(store.certificates(), (Encoded{c, plain, b, a, malformed, empty, c}));
    EXPECT_EQ(store.certificates(hex("01")), (Encoded{c, a, c}));
    EXPECT_EQ(store.certificates(hex("02")), Encoded{b});
    EXPECT_EQ(store.certificates(Bytes{}), Encoded{empty});
    EXPECT_EQ(store.certificates(hex("0102")), Encoded{});
}

TEST(Store, ShowsWhatIsAddedDuringAWalk) {
    const OpenStore store = OpenStore::memory();
    store.add(a);
    PCCERT_CONTEXT context = CertEnumCertificatesInStore(store.get(), nullptr);
    for (int i = 0; i < 100; ++i)
        store.add(certificate(std::to_string(i)));
    Encoded rest;
    while ((context = CertEnumCertificatesInStore(store.get(), context)) != nullptr)
        rest.emplace_back(context->pbCertEncoded, context->pbCertEncoded + context->cbCertEncoded);
    EXPECT_EQ(rest.size(), 100);
}

TEST(Store, ChecksTheArgumentsOfASearchAndFreesTheContext) {
    const OpenStore store = OpenStore::memory();
    const OpenStore other = OpenStore::memory();
    store.add(a);
    store.add_crl(crl("A"));
    const CRYPT_HASH_BLOB null_id{1, nullptr};
    const auto first = [&] { return CertEnumCertificatesInStore(store.get(), nullptr); };
    const auto find = [&](HCERTSTORE handle, DWORD type, const void* para,
                          PCCERT_CONTEXT previous) {
        return error_of(
            [=] { return CertFindCertificateInStore(handle, 0, 0, type, para, previous); });
    };
    EXPECT_EQ(find(store.get(), 0x10000, nullptr, first()), E_INVALIDARG);
    EXPECT_EQ(find(store.get(), CERT_FIND_KEY_IDENTIFIER, nullptr, first()), E_INVALIDARG);
    EXPECT_EQ(find(store.get(), CERT_FIND_KEY_IDENTIFIER, &null_id, first()), E_INVALIDARG);
    EXPECT_EQ(find(other.get(), CERT_FIND_ANY, nullptr, first()), E_INVALIDARG);
    EXPECT_EQ(find(store.get(), CERT_FIND_ANY, nullptr, certificate_context(a).release()),
              E_INVALIDARG);
    EXPECT_EQ(error_of([&] { return CertFindCRLInStore(store.get(), 0, 0, 1, nullptr, nullptr); }),
              E_INVALIDARG);
    // No context is left that would keep the store.
    EXPECT_NE(CertDuplicateStore(store.get()), nullptr);
    EXPECT_TRUE(CertCloseStore(store.get(), CERT_CLOSE_STORE_CHECK_FLAG));
}

TEST(CollectionStore, ShowsEachStoreOnceInTheOrderOfPriority) {
    const OpenStore first = OpenStore::memory();
    const OpenStore second = OpenStore::memory();
    const OpenStore empty = OpenStore::memory();
    const OpenStore inner = OpenStore::collection();
    const OpenStore outer = OpenStore::collection();
    const Bytes list = crl("A");
    const auto join = [](const OpenStore& whole, const OpenStore& part, DWORD priority = 0) {
        EXPECT_TRUE(CertAddStoreToCollection(whole.get(), part.get(), 0, priority));
    };
    first.add(a);
    second.add(b);
    second.add_crl(list);
    join(inner, second);
    join(inner, first);
    join(outer, empty);
    join(outer, first);
    join(outer, first);
    join(outer, inner, 1);
    join(outer, second);
    EXPECT_EQ(outer.certificates(), (Encoded{b, a}));
    EXPECT_EQ(outer.certificates(hex("01")), Encoded{a});
    EXPECT_EQ(outer.crls(), Encoded{list});
    first.add(c);
    EXPECT_EQ(outer.certificates(hex("01")), (Encoded{a, c}));

    const CertificateContext found(CertEnumCertificatesInStore(outer.get(), nullptr));
    EXPECT_EQ(found->hCertStore, second.get());
    EXPECT_EQ(error_of([&] {
                  return CertEnumCertificatesInStore(outer.get(), certificate_context(a).release());
              }),
              E_INVALIDARG);
}

TEST(CollectionStore, RefusesCirclesAndWhatIsNoCollection) {
    const OpenStore memory = OpenStore::memory();
    const OpenStore inner = OpenStore::collection();
    const OpenStore outer = OpenStore::collection();
    const auto join = [](const OpenStore& whole, const OpenStore& part, DWORD flags = 0) {
        return [&whole, &part, flags] {
            return CertAddStoreToCollection(whole.get(), part.get(), flags, 0);
        };
    };
    EXPECT_TRUE(join(outer, inner)());
    EXPECT_EQ(error_of(join(inner, outer)), E_INVALIDARG);
    EXPECT_EQ(error_of(join(outer, outer)), E_INVALIDARG);
    EXPECT_EQ(error_of(join(memory, inner)), E_INVALIDARG);
    EXPECT_EQ(error_of(join(outer, memory, 2)), E_INVALIDARG);
    EXPECT_EQ(outer.certificates(), Encoded{});
}

TEST(CollectionStore, KeepsItsStoresAndPassesAdditionsToTheOneThatTakesThem) {
    const OpenStore collection = OpenStore::collection();
    EXPECT_EQ(error_of([&] { return collection.add(a); }), E_ACCESSDENIED);
    {
        const OpenStore shown = OpenStore::memory();
        const OpenStore fixed = OpenStore::memory(CERT_STORE_READONLY_FLAG);
        const OpenStore taking = OpenStore::memory();
        constexpr DWORD takes = CERT_PHYSICAL_STORE_ADD_ENABLE_FLAG;
        EXPECT_TRUE(CertAddStoreToCollection(collection.get(), shown.get(), 0, 0));
        EXPECT_TRUE(CertAddStoreToCollection(collection.get(), fixed.get(), takes, 0));
        EXPECT_TRUE(CertAddStoreToCollection(collection.get(), taking.get(), takes, 0));
        EXPECT_TRUE(collection.add(a));
        EXPECT_EQ(taking.certificates(), Encoded{a});
    }
    EXPECT_EQ(collection.certificates(), Encoded{a});
}

} // namespace
} // namespace norvane::testing
