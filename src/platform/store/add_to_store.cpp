#include "platform/store/CollectionStore.h"
#include "platform/store/contexts.h"
#include "platform/store/guarded.h"

#include <optional>

namespace {

using norvane::Duplicate;
using norvane::ObjectStore;
using norvane::Ref;
using norvane::SharedCertificate;
using norvane::SharedCrl;
using norvane::Store;

std::optional<Duplicate> duplicate_of(DWORD disposition) noexcept {
    switch (disposition) {
    case CERT_STORE_ADD_NEW:
        return Duplicate::refused;
    case CERT_STORE_ADD_USE_EXISTING:
    case CERT_STORE_ADD_REPLACE_EXISTING:
        return Duplicate::existing_used;
    case CERT_STORE_ADD_ALWAYS:
        return Duplicate::added;
    default:
        return std::nullopt;
    }
}

/// The store that takes what is added under this handle; null with the last error if none does.
Ref<ObjectStore> find_target(HCERTSTORE handle) {
    const Ref<Store> store = Store::find(handle);
    if (!store) {
        return norvane::fail<Ref<ObjectStore>>(ERROR_INVALID_HANDLE);
    }
    auto target = store->collection() != nullptr ? store->collection()->target_of_additions()
                                                 : Ref<ObjectStore>::share(store->leaf());
    if (!target || target->additions() == norvane::Additions::refused) {
        return norvane::fail<Ref<ObjectStore>>(E_ACCESSDENIED);
    }
    return target;
}

template <class Object>
BOOL add_encoded(HCERTSTORE handle, DWORD encoding_type, const BYTE* bytes, DWORD length,
                 DWORD disposition, const typename Object::Context** added) noexcept {
    if (added != nullptr) {
        *added = nullptr;
    }
    return norvane::guarded([&]() -> BOOL {
        const std::optional<Duplicate> duplicate = duplicate_of(disposition);
        if (!duplicate) {
            return norvane::fail(E_INVALIDARG);
        }
        const Ref<ObjectStore> target = find_target(handle);
        if (!target) {
            return FALSE;
        }
        auto object = norvane::shared_object<Object>(encoding_type, bytes, length);
        if (!object) {
            return FALSE;
        }
        const auto* const cell = target->add(std::move(object), *duplicate);
        if (cell == nullptr) {
            return norvane::fail(CRYPT_E_EXISTS);
        }
        if (added != nullptr) {
            *added = norvane::share_context(*cell);
        }
        return TRUE;
    });
}

} // namespace

BOOL CertAddEncodedCertificateToStore(HCERTSTORE hCertStore, DWORD dwCertEncodingType,
                                      const BYTE* pbCertEncoded, DWORD cbCertEncoded,
                                      DWORD dwAddDisposition,
                                      PCCERT_CONTEXT* ppCertContext) noexcept {
    return add_encoded<SharedCertificate>(hCertStore, dwCertEncodingType, pbCertEncoded,
                                          cbCertEncoded, dwAddDisposition, ppCertContext);
}

BOOL CertAddEncodedCRLToStore(HCERTSTORE hCertStore, DWORD dwCertEncodingType,
                              const BYTE* pbCrlEncoded, DWORD cbCrlEncoded, DWORD dwAddDisposition,
                              PCCRL_CONTEXT* ppCrlContext) noexcept {
    return add_encoded<SharedCrl>(hCertStore, dwCertEncodingType, pbCrlEncoded, cbCrlEncoded,
                                  dwAddDisposition, ppCrlContext);
}

BOOL CertAddCertificateContextToStore(HCERTSTORE hCertStore, PCCERT_CONTEXT pCertContext,
                                      DWORD dwAddDisposition,
                                      PCCERT_CONTEXT* ppStoreContext) noexcept {
    if (pCertContext == nullptr) {
        if (ppStoreContext != nullptr) {
            *ppStoreContext = nullptr;
        }
        return norvane::fail(E_INVALIDARG);
    }
    return add_encoded<SharedCertificate>(hCertStore, X509_ASN_ENCODING,
                                          pCertContext->pbCertEncoded, pCertContext->cbCertEncoded,
                                          dwAddDisposition, ppStoreContext);
}

BOOL CertAddStoreToCollection(HCERTSTORE hCollectionStore, HCERTSTORE hSiblingStore,
                              DWORD dwUpdateFlags, DWORD dwPriority) noexcept {
    using MemberUse = norvane::CollectionStore::MemberUse;
    return norvane::guarded([&]() -> BOOL {
        const Ref<Store> collection = Store::find(hCollectionStore);
        Ref<Store> sibling = Store::find(hSiblingStore);
        if (!collection || !sibling) {
            return norvane::fail(ERROR_INVALID_HANDLE);
        }
        if (collection->collection() == nullptr ||
            (dwUpdateFlags & ~CERT_PHYSICAL_STORE_ADD_ENABLE_FLAG) != 0) {
            return norvane::fail(E_INVALIDARG);
        }
        const MemberUse use = dwUpdateFlags != 0 ? MemberUse::takes_additions : MemberUse::shown;
        return collection->collection()->add_member(std::move(sibling), use, dwPriority)
                   ? TRUE
                   : norvane::fail(E_INVALIDARG);
    });
}
