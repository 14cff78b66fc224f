#pragma once

#include "platform/config/Configuration.h"
#include "platform/config/UserFolders.h"

#include <cstddef>
#include <filesystem>
#include <string_view>

namespace norvane {

/// Larger configuration files are refused.
inline constexpr std::size_t max_configuration_file_size = 1'048'576;

/// The configuration of a machine without files.
[[nodiscard]] Configuration default_configuration(const UserFolders& folders);

/// Puts the text of one file into the configuration, over what earlier files said. Problems bear
/// the name of `file`; of very many only the first are kept, and a last one that says so.
void follow_configuration_text(std::string_view text, const std::filesystem::path& file,
                               const UserFolders& folders, Configuration& configuration);

} // namespace norvane
