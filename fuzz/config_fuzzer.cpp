#include "platform/config/ConfigurationKeys.h"
#include "platform/config/ConfigurationText.h"
#include "platform/config/IniReader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace {

using norvane::Configuration;

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

// Every line that says something is told once, in order, and within the text.
void check_lines(std::string_view text) {
    norvane::IniReader reader(text);
    std::uint32_t last = 0;
    while (const auto line = reader.next()) {
        require(line->number > last);
        last = line->number;
        require(line->kind != norvane::IniLine::Kind::entry || !line->name.empty());
    }
    require(last <= 1 + std::ranges::count(text, '\n'));
}

// Whatever the text is, what comes out can be used without a further look.
void check_values(const Configuration& configuration) {
    for (const auto& [name, value] : configuration.registry) {
        require(name.starts_with("HKEY_LOCAL_MACHINE\\") ||
                name.starts_with("HKEY_CURRENT_USER\\"));
        require(!name.ends_with('\\') && name.find("\\\\") == name.npos);
    }
    for (const auto& [name, paths] : configuration.stores) {
        require(!name.empty() && std::ranges::all_of(paths, &std::filesystem::path::is_absolute));
    }
    for (const auto& [class_id, library] : configuration.components) {
        require(class_id.size() == 38 && (library.is_absolute() || !library.has_parent_path()));
    }
    require(configuration.cache_folder.empty() || configuration.cache_folder.is_absolute());
    require(configuration.retrieval_timeout.count() >= 0);
}

bool same_settings(const Configuration& a, const Configuration& b) {
    return a.registry == b.registry && a.stores == b.stores && a.components == b.components &&
           a.revocation_modules == b.revocation_modules && a.cache_folder == b.cache_folder &&
           a.cache_size_bytes == b.cache_size_bytes && a.url_schemes == b.url_schemes &&
           a.max_redirects == b.max_redirects && a.retrieval_timeout == b.retrieval_timeout &&
           a.proxy == b.proxy && a.sha1 == b.sha1 &&
           a.response_limit_bytes == b.response_limit_bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    check_lines(text);
    const norvane::UserFolders folders{.home = "/h", .config = "/h/c", .cache = ""};
    Configuration configuration = norvane::default_configuration(folders);
    norvane::follow_configuration_text(text, "f", folders, configuration);
    check_values(configuration);

    // A text that is followed again changes nothing and is told the same.
    const Configuration once = configuration;
    norvane::follow_configuration_text(text, "f", folders, configuration);
    require(same_settings(once, configuration));
    require(configuration.problems.size() == 2 * once.problems.size());
    return 0;
}
