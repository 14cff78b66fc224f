#pragma once

#include <norvane/wincrypt.h>

#include <optional>
#include <string>
#include <string_view>

namespace norvane {

/// The name of a reason code in RFC 5280 5.3.1; empty for a number that has none.
[[nodiscard]] std::string_view reason_name(DWORD code) noexcept;

/// The CRL number (RFC 5280 5.2.3) in decimal; nothing if the CRL has none or no proper one.
[[nodiscard]] std::optional<std::string> crl_number(const CRL_INFO& crl);

/// Whether the CRL is a delta (RFC 5280 5.2.4).
[[nodiscard]] bool is_delta(const CRL_INFO& crl) noexcept;

} // namespace norvane
