#include "platform/StoreMaterial.h"
#include "store/StoreUtil.h"
#include "values/Exceptions.h"

#include <functional>
#include <stdexcept>

namespace norvane::testing {
namespace {

using Encoded = std::vector<Bytes>;

// Asks a function about each object.
template <class Context>
class Asking : public StoreFindParam<Context> {
  public:
    explicit Asking(std::function<bool(const Context&)> ask) : ask_(std::move(ask)) {}
    bool match(const Context* context) override { return ask_(*context); }

  private:
    std::function<bool(const Context&)> ask_;
};

Encoded bytes_of(const std::list<CACMPT_BLOB>& blobs) {
    Encoded all;
    for (const CACMPT_BLOB& blob : blobs)
        all.emplace_back(blob.data, blob.data + blob.length);
    return all;
}

const Bytes a = certificate("A", hex("01"));
const Bytes b = certificate("B");
const Bytes c = certificate("C", hex("01"));

TEST(StoreFindAll, AppendsInTheOrderOfTheStoreLeavingOutWhatAsn1ExceptionsAreAbout) {
    const OpenStore store = OpenStore::memory();
    const Encoded crls{crl("C"), crl("B"), crl("A")};
    for (const Bytes& encoded : {c, b, a})
        store.add(encoded);
    for (const Bytes& encoded : crls)
        store.add_crl(encoded);
    const auto ask = [count = 0](const auto& /*context*/) mutable {
        if (++count == 2)
            throw Asn1DecodeException("no name", source_module::chain_base, 1);
        return true;
    };
    std::list<CACMPT_BLOB> out;
    Asking<_CERT_CONTEXT> certificates(ask);
    store_find_all(out, store.get(), certificates);
    const Bytes key = hex("01");
    CertFindByKeyIdentifier with_key({key.data(), size_of(key)});
    store_find_all(out, store.get(), with_key);
    EXPECT_EQ(bytes_of(out), (Encoded{c, a, c, a}));
    out.clear();
    Asking<_CRL_CONTEXT> lists(ask);
    store_find_all_crls(out, store.get(), lists);
    EXPECT_EQ(bytes_of(out), (Encoded{crls[0], crls[2]}));
}

TEST(StoreFindAll, FreesTheContextOfAnyOtherException) {
    HCERTSTORE handle = CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr);
    CertAddEncodedCertificateToStore(handle, 1, a.data(), size_of(a), 4, nullptr);
    const Bytes list = crl("A");
    CertAddEncodedCRLToStore(handle, 1, list.data(), size_of(list), 4, nullptr);
    const auto ask = [](const auto& /*context*/) -> bool { throw std::runtime_error("stop"); };
    std::list<CACMPT_BLOB> out;
    Asking<_CERT_CONTEXT> certificates(ask);
    EXPECT_THROW(store_find_all(out, handle, certificates), std::runtime_error);
    Asking<_CRL_CONTEXT> lists(ask);
    EXPECT_THROW(store_find_all_crls(out, handle, lists), std::runtime_error);
    EXPECT_TRUE(out.empty());
    EXPECT_TRUE(CertCloseStore(handle, 2)); // no context keeps it
}

} // namespace
} // namespace norvane::testing
