#pragma once

#include <norvane/wincrypt.h>

#include <span>
#include <string_view>

namespace norvane {

/// An entry of the table of object identifiers with what look-ups compare.
struct OidEntry {
    std::string_view oid;
    ALG_ID key_algorithm; ///< of a signature: the first word of ExtraInfo; else 0
    const CRYPT_OID_INFO* info;

    [[nodiscard]] DWORD group() const noexcept { return info->dwGroupId; }
    /// The number of the algorithm; of a signature, that of its hash.
    [[nodiscard]] ALG_ID algorithm() const noexcept { return info->Algid; }
};

/// All entries, group by group.
[[nodiscard]] std::span<const OidEntry> oid_table() noexcept;

/// Whether the configuration lets the algorithm of an entry be used, and a provider has it. Throws
/// if that cannot be found out.
[[nodiscard]] bool is_usable(const OidEntry& entry);

} // namespace norvane
