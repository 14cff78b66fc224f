#include "platform/retrieval/RetrievalUrl.h"

#include "platform/config/AsciiCase.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <charconv>

namespace norvane {
namespace {

/// In the order of UrlScheme.
constexpr std::string_view scheme_names[] = {"http", "https", "ldap", "ldaps", "file"};

/// More characters no name of a host has (RFC 1035 2.3.4).
constexpr std::size_t max_host_length = 253;

constexpr std::string_view digits = "0123456789";

bool is_host_character(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (digits.find(c) != digits.npos) ||
           c == '.' || c == '-' || c == '_';
}

bool is_port(std::string_view text) {
    constexpr std::size_t max_digits = 5;
    return !text.empty() && text.size() <= max_digits &&
           text.find_first_not_of(digits) == text.npos;
}

/// What stands between the two slashes and the path (RFC 3986 3.2); empty if there is none.
std::string_view authority_of(std::string_view url) {
    constexpr std::string_view mark = "://";
    const std::size_t colon = url.find(':');
    if (colon == url.npos || !url.substr(colon).starts_with(mark)) {
        return {};
    }
    const std::string_view rest = url.substr(colon + mark.size());
    return rest.substr(0, rest.find_first_of("/?#"));
}

} // namespace

std::optional<UrlScheme> scheme_of(std::string_view url) noexcept {
    const std::string_view scheme = url.substr(0, url.find(':'));
    const auto* const found = std::ranges::find_if(scheme_names, [scheme](std::string_view name) {
        return equal_ignoring_case(scheme, name);
    });
    if (found == std::end(scheme_names) || scheme.size() == url.size()) {
        return std::nullopt;
    }
    return static_cast<UrlScheme>(found - std::begin(scheme_names));
}

std::string_view name_of(UrlScheme scheme) noexcept {
    return scheme_names[static_cast<std::size_t>(scheme)];
}

bool has_url_characters(std::string_view url) noexcept {
    return url.size() <= max_url_length &&
           std::ranges::all_of(url, [](char c) { return c > ' ' && c <= '~'; });
}

bool is_host(std::string_view text) noexcept {
    if (text.empty() || text.size() > max_host_length) {
        return false;
    }
    if (text.find(':') == text.npos) {
        return std::ranges::all_of(text, is_host_character);
    }
    std::array<char, max_host_length + 1> terminated{};
    std::ranges::copy(text, terminated.begin());
    in6_addr address{};
    return inet_pton(AF_INET6, terminated.data(), &address) == 1;
}

bool names_host(std::string_view url) noexcept {
    std::string_view host = authority_of(url);
    std::string_view after;
    if (host.starts_with('[')) {
        const std::size_t end = std::min(host.find(']'), host.size() - 1);
        after = host.substr(end + 1);
        host = host.substr(1, std::max<std::size_t>(end, 1) - 1);
        if (host.find(':') == host.npos) {
            return false;
        }
    } else {
        const std::size_t colon = std::min(host.find(':'), host.size());
        after = host.substr(colon);
        host = host.substr(0, colon);
    }
    return is_host(host) && (after.empty() || (after.front() == ':' && is_port(after.substr(1))));
}

std::optional<std::string> percent_decoded(std::string_view text) {
    constexpr std::size_t escape_length = 3;
    std::string decoded;
    while (!text.empty()) {
        if (text.front() != '%') {
            decoded += text.front();
            text.remove_prefix(1);
            continue;
        }
        unsigned char octet = 0;
        const char* const end = text.data() + std::min(text.size(), escape_length);
        const auto [stop, error] = std::from_chars(text.data() + 1, end, octet, 16);
        if (error != std::errc{} || stop != text.data() + escape_length || octet == 0) {
            return std::nullopt;
        }
        decoded += static_cast<char>(octet);
        text.remove_prefix(escape_length);
    }
    return decoded;
}

} // namespace norvane
