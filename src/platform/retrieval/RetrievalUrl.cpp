#include "platform/retrieval/RetrievalUrl.h"

#include "platform/config/AsciiCase.h"

#include <algorithm>
#include <charconv>

namespace norvane {
namespace {

/// In the order of UrlScheme.
constexpr std::string_view scheme_names[] = {"http", "https", "ldap", "ldaps", "file"};

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
