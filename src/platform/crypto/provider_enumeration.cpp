#include "platform/crypto/OutputBuffer.h"
#include "platform/crypto/ProviderTable.h"

namespace {

using norvane::ProviderRow;

/// Every provider, or only the first one of each type.
enum class Enumerated { providers, types };

const ProviderRow* row_at(DWORD index, Enumerated what) noexcept {
    for (const ProviderRow& row : norvane::installed_providers()) {
        if (what == Enumerated::types && norvane::default_provider(row.type) != &row) {
            continue;
        }
        if (index-- == 0) {
            return &row;
        }
    }
    return nullptr;
}

BOOL enumerate(DWORD index, const DWORD* reserved, DWORD flags, DWORD* type, LPSTR name,
               DWORD* name_size, Enumerated what) noexcept {
    if (reserved != nullptr || type == nullptr || name_size == nullptr) {
        return norvane::fail(ERROR_INVALID_PARAMETER);
    }
    if (flags != 0) {
        return norvane::fail(NTE_BAD_FLAGS);
    }
    const ProviderRow* const row = row_at(index, what);
    if (row == nullptr) {
        return norvane::fail(ERROR_NO_MORE_ITEMS);
    }
    *type = row->type;
    return norvane::give_text(what == Enumerated::types ? row->type_name : row->name, name,
                              name_size);
}

} // namespace

BOOL CryptEnumProvidersA(DWORD dwIndex, DWORD* pdwReserved, DWORD dwFlags, DWORD* pdwProvType,
                         LPSTR szProvName, DWORD* pcbProvName) noexcept {
    return enumerate(dwIndex, pdwReserved, dwFlags, pdwProvType, szProvName, pcbProvName,
                     Enumerated::providers);
}

BOOL CryptEnumProviderTypesA(DWORD dwIndex, DWORD* pdwReserved, DWORD dwFlags, DWORD* pdwProvType,
                             LPSTR szTypeName, DWORD* pcbTypeName) noexcept {
    return enumerate(dwIndex, pdwReserved, dwFlags, pdwProvType, szTypeName, pcbTypeName,
                     Enumerated::types);
}
