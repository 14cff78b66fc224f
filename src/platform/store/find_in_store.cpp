#include "platform/store/CollectionStore.h"
#include "platform/store/contexts.h"
#include "platform/store/guarded.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace {

using norvane::ByteView;
using norvane::ContextCell;
using norvane::ObjectStore;
using norvane::Ref;
using norvane::SharedCertificate;
using norvane::SharedCrl;
using norvane::Store;

/// The next object that a store shows, or null; nothing if `previous` is none of its objects.
/// `first_from(leaf, place)` gives the first that fits in one leaf, from a place on.
template <class Object, class FirstFrom>
std::optional<const ContextCell<Object>*>
next_cell(Store& store, const ContextCell<Object>* previous, FirstFrom first_from) {
    if (ObjectStore* const leaf = store.leaf()) {
        if (previous != nullptr && previous->store != leaf) {
            return std::nullopt;
        }
        return first_from(*leaf, previous == nullptr ? 0 : previous->place + 1);
    }
    if (previous != nullptr && previous->store != nullptr) {
        if (const auto* const cell = first_from(*previous->store, previous->place + 1)) {
            return cell;
        }
    }
    const std::vector<Ref<ObjectStore>> leaves = store.collection()->leaves();
    auto leaf = leaves.begin();
    if (previous != nullptr) {
        leaf = std::ranges::find(leaves, previous->store, &Ref<ObjectStore>::get);
        if (leaf == leaves.end()) {
            return std::nullopt;
        }
        ++leaf;
    }
    for (; leaf != leaves.end(); ++leaf) {
        if (const auto* const cell = first_from(**leaf, 0)) {
            return cell;
        }
    }
    return nullptr;
}

/// What all functions that find have in common: `previous` is freed whatever happens.
template <class Object, class FirstFrom>
const typename Object::Context* find_next(HCERTSTORE handle,
                                          const typename Object::Context* previous,
                                          FirstFrom first_from) noexcept {
    using Result = const typename Object::Context*;
    const norvane::HeldContext<Object> held(previous);
    return norvane::guarded([&]() -> Result {
        const Ref<Store> store = Store::find(handle);
        if (!store) {
            return norvane::fail<Result>(ERROR_INVALID_HANDLE);
        }
        const auto cell = next_cell<Object>(*store, held.cell(), first_from);
        if (!cell) {
            return norvane::fail<Result>(E_INVALIDARG);
        }
        if (*cell == nullptr) {
            return norvane::fail<Result>(CRYPT_E_NOT_FOUND);
        }
        return norvane::share_context(**cell);
    });
}

template <class Object>
const typename Object::Context* refuse(const typename Object::Context* previous) noexcept {
    const norvane::HeldContext<Object> held(previous);
    return norvane::fail<const typename Object::Context*>(E_INVALIDARG);
}

} // namespace

PCCERT_CONTEXT CertEnumCertificatesInStore(HCERTSTORE hCertStore,
                                           PCCERT_CONTEXT pPrevCertContext) noexcept {
    return find_next<SharedCertificate>(
        hCertStore, pPrevCertContext,
        [](const ObjectStore& leaf, std::uint32_t place) { return leaf.certificate_from(place); });
}

PCCERT_CONTEXT CertFindCertificateInStore(HCERTSTORE hCertStore, DWORD /*dwCertEncodingType*/,
                                          DWORD /*dwFindFlags*/, DWORD dwFindType,
                                          const void* pvFindPara,
                                          PCCERT_CONTEXT pPrevCertContext) noexcept {
    if (dwFindType == CERT_FIND_ANY) {
        return CertEnumCertificatesInStore(hCertStore, pPrevCertContext);
    }
    const auto* const identifier = static_cast<const CRYPT_HASH_BLOB*>(pvFindPara);
    if (dwFindType != CERT_FIND_KEY_IDENTIFIER || identifier == nullptr ||
        (identifier->pbData == nullptr && identifier->cbData != 0)) {
        return refuse<SharedCertificate>(pPrevCertContext);
    }
    return find_next<SharedCertificate>(hCertStore, pPrevCertContext,
                                        [key = ByteView{identifier->pbData, identifier->cbData}](
                                            const ObjectStore& leaf, std::uint32_t place) {
                                            return leaf.certificate_from(place, key);
                                        });
}

PCCRL_CONTEXT CertFindCRLInStore(HCERTSTORE hCertStore, DWORD /*dwCertEncodingType*/,
                                 DWORD /*dwFindFlags*/, DWORD dwFindType,
                                 const void* /*pvFindPara*/,
                                 PCCRL_CONTEXT pPrevCrlContext) noexcept {
    if (dwFindType != CRL_FIND_ANY) {
        return refuse<SharedCrl>(pPrevCrlContext);
    }
    return find_next<SharedCrl>(
        hCertStore, pPrevCrlContext,
        [](const ObjectStore& leaf, std::uint32_t place) { return leaf.crl_from(place); });
}
