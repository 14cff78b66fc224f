#include "provider/StoreAssembly.h"

#include "record/Record.h"
#include "store/StoreHandle.h"
#include "values/ProcessFailure.h"

#include <memory>

namespace norvane {
namespace {

struct CloseStore {
    void operator()(HCERTSTORE store) const { CertCloseStore(store, 0); }
};

/// A store for the issuer hint alone.
void add_memory_store(ChainValidator& chain, PCCERT_CONTEXT issuer_hint) {
    const std::unique_ptr<void, CloseStore> memory(platform_answer(
        [] {
            return CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, CERT_STORE_CREATE_NEW_FLAG, nullptr);
        },
        source_module::chain, __LINE__));
    if (memory == nullptr) {
        return;
    }
    chain.cert_stores.emplace(memory.get());
    if (issuer_hint != nullptr) {
        static_cast<void>(platform_answer(
            [&] {
                return CertAddCertificateContextToStore(memory.get(), issuer_hint,
                                                        CERT_STORE_ADD_ALWAYS, nullptr);
            },
            source_module::chain, __LINE__));
    }
}

} // namespace

void assemble_stores(ChainValidator& chain, const RevocationParameters& parameters) {
    StoreHandle root;
    if (open_system_store(root, NORVANE_W("Root"), system_store_flags)) {
        chain.cert_stores.insert(root);
    } else {
        note(event::store_not_opened, record_value("store", std::string_view("Root")));
    }
    StoreHandle ca;
    if (open_system_store(ca, NORVANE_W("CA"), system_store_flags)) {
        chain.cert_stores.insert(ca);
        if (parameters.crl_store == nullptr) {
            chain.crl_stores.insert(ca);
        }
    } else {
        note(event::store_not_opened, record_value("store", std::string_view("CA")));
    }
    add_memory_store(chain, parameters.issuer_hint);
    if (parameters.issuer_hint != nullptr && parameters.issuer_hint->hCertStore != nullptr) {
        chain.cert_stores.emplace(parameters.issuer_hint->hCertStore);
    }
    if (parameters.crl_store != nullptr) {
        chain.crl_stores.emplace(parameters.crl_store);
    }
    for (HCERTSTORE store : parameters.cert_stores) {
        chain.cert_stores.emplace(store);
    }
}

} // namespace norvane
