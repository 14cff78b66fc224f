#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace norvane {

/// Longer URLs are refused; those of CRLs take a few hundred characters.
inline constexpr std::size_t max_url_length = 8192;

enum class UrlScheme : std::uint8_t { http, https, ldap, ldaps, file };

/// The scheme of a URL (RFC 3986 3.1), in any case of letters; nothing if there is none that is
/// known.
[[nodiscard]] std::optional<UrlScheme> scheme_of(std::string_view url) noexcept;

[[nodiscard]] std::string_view name_of(UrlScheme scheme) noexcept;

/// Whether the text consists of characters that a URL may have, and is not too long.
[[nodiscard]] bool has_url_characters(std::string_view url) noexcept;

/// Whether this may be the host of a URL: letters, digits, ".", "-" and "_", or an address of IPv6
/// without brackets and zone. Anything else a library might take for more than the name of a host.
[[nodiscard]] bool is_host(std::string_view text) noexcept;

/// Whether a URL of another scheme than `file` names a host as it stands, without escapes, and at
/// most a port beside it: no user, no password.
[[nodiscard]] bool names_host(std::string_view url) noexcept;

/// The text with each %XX replaced by the octet (RFC 3986 2.1); nothing if a percent sign is
/// followed by something else, or stands for a zero octet.
[[nodiscard]] std::optional<std::string> percent_decoded(std::string_view text);

} // namespace norvane
