#include "platform/retrieval/CrlMark.h"

#include "platform/retrieval/CacheEntry.h"

#include <array>
#include <span>

namespace norvane {
namespace {

constexpr std::string_view mark_magic = "NRVNCRL1";
constexpr std::size_t date_length = sizeof(std::uint64_t);
constexpr std::uint64_t believable_future_seconds = 86'400;

constexpr std::string_view oid_delta_crl_indicator = "2.5.29.27";
/// What tells the scopes of one issuer apart.
constexpr std::array<std::string_view, 2> oids_of_scope = {
    "2.5.29.28",  // issuing distribution point
    "2.5.29.35"}; // authority key identifier

/// Seconds since 1970 as ticks of 100 ns since 1601.
std::uint64_t to_ticks(std::uint64_t seconds) {
    constexpr std::uint64_t seconds_from_1601_to_1970 = 11'644'473'600;
    constexpr std::uint64_t ticks_per_second = 10'000'000;
    return (seconds + seconds_from_1601_to_1970) * ticks_per_second;
}

const CERT_EXTENSION* find_extension(const CRL_INFO& crl, std::string_view oid) {
    for (const CERT_EXTENSION& extension : std::span(crl.rgExtension, crl.cExtension)) {
        if (extension.pszObjId == oid) {
            return &extension;
        }
    }
    return nullptr;
}

} // namespace

CrlMark mark_of(const CRL_INFO& crl) {
    Digester scope;
    scope.add(find_extension(crl, oid_delta_crl_indicator) != nullptr ? "delta" : "whole");
    const auto add = [&scope](const CRYPT_DATA_BLOB& part) {
        scope.add(encoded_length(part.cbData)).add({part.pbData, part.cbData});
    };
    add(crl.Issuer);
    for (const std::string_view oid : oids_of_scope) {
        const CERT_EXTENSION* const extension = find_extension(crl, oid);
        add(extension == nullptr ? CRYPT_DATA_BLOB{} : extension->Value);
    }
    const std::uint64_t high = crl.ThisUpdate.dwHighDateTime;
    return {.scope = scope.finish(), .this_update = high << 32 | crl.ThisUpdate.dwLowDateTime};
}

bool is_believable(std::uint64_t this_update, std::time_t now) noexcept {
    return this_update <= to_ticks(static_cast<std::uint64_t>(now) + believable_future_seconds);
}

std::string_view mark_file_ending(MarkGround ground) noexcept {
    return ground == MarkGround::served ? ".served" : ".verified";
}

std::string mark_file_name(const Digest& scope, MarkGround ground) {
    return to_hex(scope).append(mark_file_ending(ground));
}

std::string encode_mark(std::string_view file_name, std::uint64_t this_update) {
    std::string file(mark_magic);
    for (std::size_t i = 0; i < date_length; ++i) {
        file += static_cast<char>(this_update >> (8 * i) & 0xff);
    }
    const Digest digest = Digester().add(file_name).add(file).finish();
    return file.append(digest.begin(), digest.end());
}

std::optional<std::uint64_t> decode_mark(std::string_view file_name, std::string_view file) {
    if (file.size() != mark_file_size) {
        return std::nullopt;
    }
    std::uint64_t this_update = 0;
    for (std::size_t i = 0; i < date_length; ++i) {
        this_update |= std::uint64_t{static_cast<std::uint8_t>(file[mark_magic.size() + i])}
                       << (8 * i);
    }
    return encode_mark(file_name, this_update) == file ? std::optional(this_update) : std::nullopt;
}

} // namespace norvane
