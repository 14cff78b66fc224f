#include "crypto/ProviderLookup.h"

#include "values/ProcessFailure.h"

namespace norvane {
namespace {

[[noreturn]] void throw_last_status(std::uint32_t line) {
    throw_bare_status(GetLastError(), source_module::encode_and, line);
}

/// Opens a provider for public operations only. Throws CAtlException.
HCRYPTPROV acquire(DWORD type, const WCHAR* name) {
    HCRYPTPROV provider = 0;
    if (CryptAcquireContextW(&provider, nullptr, name, type, CRYPT_VERIFYCONTEXT) == FALSE) {
        throw_last_status(__LINE__);
    }
    return provider;
}

void release(CFindAlgIdIn& search) {
    if (search.provider != 0) {
        const BOOL released = CryptReleaseContext(search.provider, 0);
        search.provider = 0;
        if (released == FALSE) {
            throw_last_status(__LINE__);
        }
    }
}

/// What the search found with a reference for the caller, or 0. The status of the walk does not
/// matter, unless the process failed: only what is held counts.
template <class Search>
HCRYPTPROV find_in(ALG_ID algid) {
    Search search(algid);
    require_no_process_error(search.walk(), source_module::encode_and, __LINE__);
    if (search.provider != 0 && CryptContextAddRef(search.provider, nullptr, 0) == FALSE) {
        throw_last_status(__LINE__);
    }
    return search.provider;
}

} // namespace

CFindAlgIdIn::~CFindAlgIdIn() {
    try {
        release(*this);
    } catch (...) { // There is nobody left to tell.
    }
}

bool has_algorithm(CFindAlgIdIn& search, DWORD type, const WCHAR* name) {
    release(search);
    search.provider = acquire(type, name);
    for (DWORD flags = CRYPT_FIRST;; flags = 0) {
        PROV_ENUMALGS_EX answer{};
        DWORD size = sizeof answer;
        if (CryptGetProvParam(search.provider, PP_ENUMALGS_EX, reinterpret_cast<BYTE*>(&answer),
                              &size, flags) == FALSE) {
            break;
        }
        if (answer.aiAlgid == search.algid) {
            return true;
        }
    }
    if (GetLastError() != ERROR_NO_MORE_ITEMS) {
        throw_last_status(__LINE__);
    }
    release(search); // What is held after a walk is taken for a hit.
    return false;
}

bool CFindAlgIdInDefaultProviders::on_provider_type(DWORD type, const WCHAR* /*name*/) {
    return !has_algorithm(*this, type, nullptr);
}

bool CFindAlgIdInProviders::on_provider(const WCHAR* name, DWORD type) {
    return !has_algorithm(*this, type, name);
}

HCRYPTPROV find_provider_for_algid(ALG_ID algid) {
    if (algid == 0) {
        return acquire(PROV_RSA_FULL, nullptr);
    }
    const HCRYPTPROV found = find_in<CFindAlgIdInDefaultProviders>(algid);
    return found != 0 ? found : find_in<CFindAlgIdInProviders>(algid);
}

} // namespace norvane
