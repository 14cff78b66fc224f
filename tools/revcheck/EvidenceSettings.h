#pragma once

#include "call/Limits.h"

#include <norvane/wincrypt.h>

#include <array>
#include <string>

namespace norvane {

// What a decision depends on beside its material, and how an evidence tells of it.

/// A key of the configuration that a decision reads, apart from stores and limits.
struct EvidenceSetting {
    const char* section;
    const char* key;
    /// What alone a decision can be made again with, since it names code; null: anything.
    const char* required;
};

inline constexpr std::array<EvidenceSetting, 4> evidence_settings{{
    {"crypto", "sha1", nullptr},
    {"retrieval", "schemes", nullptr},
    {"providers", "modules", "norvane_revocation.so"},
    {"com", "{1FDD1FC3-6347-49DF-BDAB-E465BF32AD92}", "norvane_pkup.so"},
}};

[[nodiscard]] inline std::string name_of(const EvidenceSetting& setting) {
    return std::string(setting.section) + "." + setting.key;
}

inline constexpr std::array<Resource, resource_count> all_resources{
    Resource::verifications, Resource::hashed_bytes, Resource::shown_objects, Resource::retrievals,
    Resource::retrieval_time};

/// Whether a decision depends on what it reads from a clock: without a common budget it reads the
/// system's clock too, and makes nothing of it.
[[nodiscard]] constexpr bool counts(DWORD clock, bool accumulative) noexcept {
    return accumulative || clock == NORVANE_CLOCK_TICKS;
}

} // namespace norvane
