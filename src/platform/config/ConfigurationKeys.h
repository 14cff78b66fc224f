#pragma once

#include "platform/config/Configuration.h"
#include "platform/config/UserFolders.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace norvane {

enum class Assignment : std::uint8_t { done, bad_name, bad_value };

/// A key of the configuration files.
struct ConfigurationKey {
    std::string_view section;
    std::string_view key; ///< `any_key` for every name that has no row of its own
    std::string_view kind;
    std::string_view default_value; ///< as a file would give it
    std::string_view meaning;
    /// Parses `value` and puts it into the configuration, under the name `key` where the row is for
    /// any. Unless that is done, the configuration is unchanged.
    Assignment (*assign)(Configuration& configuration, std::string_view key, std::string_view value,
                         const UserFolders& folders);
};

inline constexpr std::string_view any_key = "*";

/// All keys. Sections and keys are the same in upper and lower case.
[[nodiscard]] std::span<const ConfigurationKey> configuration_keys() noexcept;

[[nodiscard]] bool is_configuration_section(std::string_view section) noexcept;

/// The row for a key of a section; null if there is none.
[[nodiscard]] const ConfigurationKey* find_configuration_key(std::string_view section,
                                                             std::string_view key) noexcept;

/// Has the row assign a value, and keeps its text if that is done. Throws std::bad_alloc.
[[nodiscard]] Assignment assign_configuration(const ConfigurationKey& row,
                                              Configuration& configuration, std::string_view key,
                                              std::string_view value, const UserFolders& folders);

/// Under what name Configuration::texts has a key.
[[nodiscard]] std::string configuration_text_name(std::string_view section, std::string_view key);

} // namespace norvane
