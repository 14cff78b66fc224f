#include "platform/crypto/AllowedHashes.h"
#include "platform/crypto/Handles.h"
#include "platform/crypto/OutputBuffer.h"
#include "platform/store/guarded.h"

#include <algorithm>
#include <optional>
#include <string>

namespace {

using norvane::Algorithm;
using norvane::ProviderContext;
using norvane::ProviderRow;

constexpr DWORD max_provider_type = 999;

/// The row to open; null, with the last error set, if there is none.
const ProviderRow* choose(const std::optional<std::string>& name, DWORD type) noexcept {
    if (type == 0 || type > max_provider_type) {
        return norvane::fail<const ProviderRow*>(NTE_BAD_PROV_TYPE);
    }
    const ProviderRow* const default_row = norvane::default_provider(type);
    if (default_row == nullptr) {
        return norvane::fail<const ProviderRow*>(NTE_PROV_TYPE_NOT_DEF);
    }
    if (!name) {
        return default_row;
    }
    const ProviderRow* const named = norvane::find_provider(*name);
    if (named == nullptr) {
        return norvane::fail<const ProviderRow*>(NTE_KEYSET_NOT_DEF);
    }
    return named->type == type ? named : norvane::fail<const ProviderRow*>(NTE_PROV_TYPE_NO_MATCH);
}

/// Names of providers are ASCII; any other character becomes one that no name has.
std::string narrow(std::u16string_view wide) {
    std::string text(wide.size(), '\0');
    std::ranges::transform(wide, text.begin(), [](WCHAR c) {
        constexpr char no_character = '\x7F';
        return c < 0x80 ? static_cast<char>(c) : no_character;
    });
    return text;
}

template <class Char, class ToText>
BOOL acquire(HCRYPTPROV* handle, const Char* container, const Char* name, DWORD type, DWORD flags,
             ToText to_text) noexcept {
    if (handle == nullptr) {
        return norvane::fail(ERROR_INVALID_PARAMETER);
    }
    if (flags != CRYPT_VERIFYCONTEXT) {
        return norvane::fail(NTE_BAD_FLAGS);
    }
    if (container != nullptr && *container != Char{}) {
        return norvane::fail(NTE_BAD_KEYSET);
    }
    return norvane::guarded({.no_memory = NTE_NO_MEMORY, .other = NTE_PROVIDER_DLL_FAIL}, [&] {
        const ProviderRow* const row = choose(
            name == nullptr ? std::nullopt : std::optional<std::string>(to_text(name)), type);
        if (row == nullptr) {
            return FALSE;
        }
        *handle = norvane::make_handle<ProviderContext>(*row, row->provider());
        return TRUE;
    });
}

DWORD put_name(std::string_view name, CHAR* out) noexcept {
    *std::ranges::copy(name, out).out = '\0';
    return static_cast<DWORD>(name.size() + 1);
}

BOOL enumerate_algorithms(ProviderContext& context, BYTE* buffer, DWORD* size, DWORD flags) {
    const auto algorithms = context.provider.algorithms();
    std::size_t index = flags == CRYPT_FIRST ? 0 : context.next_algorithm.load();
    while (index < algorithms.size() && !norvane::is_hash_allowed(algorithms[index].id)) {
        ++index;
    }
    if (index >= algorithms.size()) {
        context.next_algorithm = index;
        return norvane::fail(ERROR_NO_MORE_ITEMS);
    }
    const Algorithm& algorithm = algorithms[index];
    PROV_ENUMALGS_EX answer{};
    answer.aiAlgid = algorithm.id;
    answer.dwDefaultLen = algorithm.default_bits;
    answer.dwMinLen = algorithm.min_bits;
    answer.dwMaxLen = algorithm.max_bits;
    answer.dwNameLen = put_name(algorithm.name, answer.szName);
    answer.dwLongNameLen = put_name(algorithm.long_name, answer.szLongName);
    const BOOL given = norvane::give_bytes(&answer, sizeof answer, buffer, size);
    // Who only asks for the size, or gives too little room, asks again for the same algorithm.
    context.next_algorithm = given != FALSE && buffer != nullptr ? index + 1 : index;
    return given;
}

} // namespace

BOOL CryptAcquireContextA(HCRYPTPROV* phProv, LPCSTR szContainer, LPCSTR szProvider,
                          DWORD dwProvType, DWORD dwFlags) noexcept {
    return acquire(phProv, szContainer, szProvider, dwProvType, dwFlags,
                   [](LPCSTR name) { return std::string(name); });
}

BOOL CryptAcquireContextW(HCRYPTPROV* phProv, LPCWSTR szContainer, LPCWSTR szProvider,
                          DWORD dwProvType, DWORD dwFlags) noexcept {
    return acquire(phProv, szContainer, szProvider, dwProvType, dwFlags, narrow);
}

// NOLINTNEXTLINE(readability-non-const-parameter): the platform declares it so
BOOL CryptContextAddRef(HCRYPTPROV hProv, DWORD* pdwReserved, DWORD dwFlags) noexcept {
    auto* const context = norvane::object_of<ProviderContext>(hProv);
    if (context == nullptr) {
        return norvane::fail(NTE_BAD_UID);
    }
    if (pdwReserved != nullptr) {
        return norvane::fail(ERROR_INVALID_PARAMETER);
    }
    if (dwFlags != 0) {
        return norvane::fail(NTE_BAD_FLAGS);
    }
    ++context->references;
    return TRUE;
}

BOOL CryptReleaseContext(HCRYPTPROV hProv, DWORD dwFlags) noexcept {
    auto* const context = norvane::object_of<ProviderContext>(hProv);
    if (context == nullptr) {
        return norvane::fail(NTE_BAD_UID);
    }
    if (dwFlags != 0) {
        return norvane::fail(NTE_BAD_FLAGS);
    }
    if (--context->references == 0) {
        delete context;
    }
    return TRUE;
}

BOOL CryptGetProvParam(HCRYPTPROV hProv, DWORD dwParam, BYTE* pbData, DWORD* pdwDataLen,
                       DWORD dwFlags) noexcept {
    auto* const context = norvane::object_of<ProviderContext>(hProv);
    if (context == nullptr) {
        return norvane::fail(NTE_BAD_UID);
    }
    if (pdwDataLen == nullptr) {
        return norvane::fail(ERROR_INVALID_PARAMETER);
    }
    const bool enumeration = dwParam == PP_ENUMALGS_EX;
    if (dwFlags != 0 && (!enumeration || (dwFlags != CRYPT_FIRST && dwFlags != CRYPT_NEXT))) {
        return norvane::fail(NTE_BAD_FLAGS);
    }
    switch (dwParam) {
    case PP_NAME:
        return norvane::give_text(context->row.name, pbData, pdwDataLen);
    case PP_PROVTYPE:
        return norvane::give_bytes(&context->row.type, sizeof context->row.type, pbData,
                                   pdwDataLen);
    case PP_ENUMALGS_EX:
        return norvane::guarded(norvane::provider_codes, [&] {
            return enumerate_algorithms(*context, pbData, pdwDataLen, dwFlags);
        });
    default:
        return norvane::fail(NTE_BAD_TYPE);
    }
}
