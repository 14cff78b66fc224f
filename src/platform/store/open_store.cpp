#include "platform/WideText.h"
#include "platform/store/CollectionStore.h"
#include "platform/store/NamedStore.h"
#include "platform/store/guarded.h"

#include <string_view>

namespace {

using norvane::Additions;
using norvane::NamedStore;
using norvane::Ref;
using norvane::Store;

template <class Kind, class Argument>
HCERTSTORE open_new(Argument argument) {
    const Ref<Kind> store = Store::make<Kind>(std::move(argument));
    store->open();
    return store->handle();
}

HCERTSTORE open_named(LPCWSTR name, DWORD flags) {
    if (name == nullptr || *name == u'\0') {
        return norvane::fail<HCERTSTORE>(E_INVALIDARG);
    }
    NamedStore* const named = NamedStore::find(norvane::to_utf8(name));
    if (named == nullptr && (flags & CERT_STORE_OPEN_EXISTING_FLAG) != 0) {
        return norvane::fail<HCERTSTORE>(ERROR_FILE_NOT_FOUND);
    }
    if (named != nullptr && (flags & CERT_STORE_CREATE_NEW_FLAG) != 0) {
        return norvane::fail<HCERTSTORE>(ERROR_FILE_EXISTS);
    }
    return named == nullptr ? open_new<norvane::ObjectStore>(Additions::refused)
                            : open_new<norvane::OpenedNamedStore>(named->content()->objects);
}

HCERTSTORE open_in_memory(LPCSTR provider, DWORD flags) {
    if ((flags & CERT_STORE_OPEN_EXISTING_FLAG) != 0) {
        return norvane::fail<HCERTSTORE>(ERROR_FILE_NOT_FOUND);
    }
    const bool read_only = (flags & CERT_STORE_READONLY_FLAG) != 0;
    const Additions additions = read_only ? Additions::refused : Additions::allowed;
    if (provider == CERT_STORE_PROV_COLLECTION) {
        return open_new<norvane::CollectionStore>(additions);
    }
    return open_new<norvane::ObjectStore>(additions);
}

} // namespace

HCERTSTORE CertOpenStore(LPCSTR lpszStoreProvider, DWORD /*dwEncodingType*/,
                         uintptr_t /*hCryptProv*/, DWORD dwFlags, const void* pvPara) noexcept {
    constexpr DWORD one_of = CERT_STORE_CREATE_NEW_FLAG | CERT_STORE_OPEN_EXISTING_FLAG;
    const bool named = lpszStoreProvider == CERT_STORE_PROV_SYSTEM_W;
    const DWORD known_flags =
        one_of | CERT_STORE_READONLY_FLAG | (named ? CERT_SYSTEM_STORE_LOCATION_MASK : 0);
    return norvane::guarded([&]() -> HCERTSTORE {
        if (!named && lpszStoreProvider != CERT_STORE_PROV_MEMORY &&
            lpszStoreProvider != CERT_STORE_PROV_COLLECTION) {
            return norvane::fail<HCERTSTORE>(ERROR_FILE_NOT_FOUND);
        }
        if ((dwFlags & ~known_flags) != 0 || (dwFlags & one_of) == one_of) {
            return norvane::fail<HCERTSTORE>(E_INVALIDARG);
        }
        return named ? open_named(static_cast<LPCWSTR>(pvPara), dwFlags)
                     : open_in_memory(lpszStoreProvider, dwFlags);
    });
}

HCERTSTORE CertDuplicateStore(HCERTSTORE hCertStore) noexcept {
    if (hCertStore == nullptr) {
        return nullptr;
    }
    return norvane::guarded([&]() -> HCERTSTORE {
        const Ref<Store> store = Store::find(hCertStore);
        if (!store) {
            return norvane::fail<HCERTSTORE>(ERROR_INVALID_HANDLE);
        }
        store->open();
        return hCertStore;
    });
}

BOOL CertCloseStore(HCERTSTORE hCertStore, DWORD dwFlags) noexcept {
    if (hCertStore == nullptr) {
        return TRUE;
    }
    return norvane::guarded([&]() -> BOOL {
        if ((dwFlags & ~CERT_CLOSE_STORE_CHECK_FLAG) != 0) {
            return norvane::fail(E_INVALIDARG);
        }
        const Ref<Store> store = Store::find(hCertStore);
        if (!store || !store->close()) {
            return norvane::fail(ERROR_INVALID_HANDLE);
        }
        const bool pending = !store->is_open() && !store->has_one_reference();
        return dwFlags != 0 && pending ? norvane::fail(CRYPT_E_PENDING_CLOSE) : TRUE;
    });
}

BOOL NorvaneEnumSkippedStoreFiles(LPCWSTR pwszStoreName, NORVANE_SKIPPED_FILE_CALLBACK pfnCallback,
                                  void* pvArg) noexcept {
    if (pwszStoreName == nullptr || *pwszStoreName == u'\0' || pfnCallback == nullptr) {
        return norvane::fail(E_INVALIDARG);
    }
    return norvane::guarded([&]() -> BOOL {
        NamedStore* const named = NamedStore::find(norvane::to_utf8(pwszStoreName));
        if (named == nullptr) {
            return norvane::fail(ERROR_FILE_NOT_FOUND);
        }
        try {
            const auto content = named->content();
            for (const norvane::SkippedFile& file : content->skipped) {
                if (!pfnCallback(file.path.c_str(), file.reason.c_str(), pvArg)) {
                    break;
                }
            }
            return TRUE;
        } catch (const norvane::UnreadableFile& file) {
            static_cast<void>(pfnCallback(file.path().c_str(), file.what(), pvArg));
            return norvane::fail(file.last_error());
        }
    });
}
