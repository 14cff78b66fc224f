#pragma once

#include "platform/config/Configuration.h"
#include "platform/config/UserFolders.h"

#include <string_view>

namespace norvane {

/// The configuration of a machine without files.
[[nodiscard]] Configuration default_configuration(const UserFolders& folders);

/// Puts the text of one file into the configuration, over what earlier files said. Problems bear
/// the name of `file`; of very many only the first are kept, and a last one that says so.
void follow_configuration_text(std::string_view text, const std::filesystem::path& file,
                               const UserFolders& folders, Configuration& configuration);

} // namespace norvane
