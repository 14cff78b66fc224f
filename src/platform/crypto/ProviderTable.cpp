#include "platform/crypto/ProviderTable.h"

#include "platform/config/AsciiCase.h"
#include "platform/crypto/GostProvider.h"
#include "platform/crypto/LibcryptoProvider.h"

#include <algorithm>

namespace norvane {
namespace {

constexpr ProviderRow providers[] = {
    {PROV_RSA_FULL, "RSA Full (Signature and Key Exchange)", "Norvane Base Provider over libcrypto",
     libcrypto_provider},
    {PROV_RSA_AES, "RSA Full and AES", "Norvane RSA and AES Provider over libcrypto",
     libcrypto_provider},
    {PROV_NORVANE_GOST, "GOST R 34.10 Signature", "Norvane GOST Provider over Botan",
     gost_provider},
};

const ProviderRow* row_or_null(const ProviderRow* found) noexcept {
    return found == std::end(providers) ? nullptr : found;
}

} // namespace

std::span<const ProviderRow> installed_providers() noexcept { return providers; }

const ProviderRow* default_provider(DWORD type) noexcept {
    return row_or_null(std::ranges::find(providers, type, &ProviderRow::type));
}

const ProviderRow* find_provider(std::string_view name) noexcept {
    return row_or_null(std::ranges::find_if(
        providers, [name](const ProviderRow& row) { return equal_ignoring_case(row.name, name); }));
}

bool is_offered(ALG_ID algorithm) {
    return std::ranges::any_of(
        providers, [=](const ProviderRow& row) { return row.provider().offers(algorithm); });
}

} // namespace norvane
