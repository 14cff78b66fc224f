#include "platform/config/UserFolders.h"

#include <cstdlib>

namespace norvane {
namespace {

constexpr const char* product_folder = "norvane";

/// The folder that the variable names, which only counts if it is absolute.
std::filesystem::path folder_in(const char* variable) {
    const char* text = trusted_environment(variable);
    return text != nullptr && *text == '/' ? std::filesystem::path(text) : std::filesystem::path();
}

std::filesystem::path product_folder_in(const char* variable, const std::filesystem::path& home,
                                        const char* default_name) {
    std::filesystem::path base = folder_in(variable);
    if (base.empty() && !home.empty()) {
        base = home / default_name;
    }
    return base.empty() ? base : base / product_folder;
}

} // namespace

const char* trusted_environment(const char* name) noexcept { return secure_getenv(name); }

UserFolders user_folders() {
    const std::filesystem::path home = folder_in("HOME");
    return {.home = home,
            .config = product_folder_in("XDG_CONFIG_HOME", home, ".config"),
            .cache = product_folder_in("XDG_CACHE_HOME", home, ".cache")};
}

} // namespace norvane
