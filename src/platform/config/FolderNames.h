#pragma once

#include <filesystem>
#include <string>
#include <variant>
#include <vector>

namespace norvane {

/// The names of what is in a folder, in no order; or the errno with which the system refused to
/// tell all of them. The iterator of the standard library would end the program if there were no
/// memory.
[[nodiscard]] std::variant<std::vector<std::string>, int>
names_in_folder(const std::filesystem::path& path);

} // namespace norvane
