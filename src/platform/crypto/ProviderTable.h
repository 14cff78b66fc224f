#pragma once

#include "platform/crypto/Provider.h"

#include <span>
#include <string_view>

namespace norvane {

/// An installed provider.
struct ProviderRow {
    DWORD type;
    const char* type_name;
    const char* name;
    /// The provider, which several rows may share. Made at the first call, for as long as the
    /// process lives; throws if the library behind it cannot be started.
    const Provider& (*provider)();
};

/// The installed providers. The first one of a type is the type's default.
[[nodiscard]] std::span<const ProviderRow> installed_providers() noexcept;

/// The default provider of a type; null if there is none.
[[nodiscard]] const ProviderRow* default_provider(DWORD type) noexcept;

/// The provider with this name, ASCII letters of either case being the same; null if there is none.
[[nodiscard]] const ProviderRow* find_provider(std::string_view name) noexcept;

/// Whether one of them offers the algorithm. Throws what starting them throws.
[[nodiscard]] bool is_offered(ALG_ID algorithm);

} // namespace norvane
