#include "Configure.h"

#include <cstdlib>
#include <filesystem>
#include <new>
#include <string>

namespace norvane {
namespace {

/// As the configuration wants a path: absolute.
std::string absolute(const std::string& path) {
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    if (error) {
        throw UsageError(path + ": " + error.message());
    }
    return absolute.string();
}

void set(const char* option, const char* section, const char* key, const std::string& value) {
    if (NorvaneSetConfiguration(section, key, value.c_str()) != FALSE) {
        return;
    }
    if (GetLastError() == ERROR_NOT_ENOUGH_MEMORY) {
        throw std::bad_alloc();
    }
    throw UsageError(std::string(option) + ": \"" + value + "\" cannot be used");
}

} // namespace

std::string path_list(const std::vector<std::string>& paths) {
    std::string list;
    for (const std::string& path : paths) {
        list += list.empty() ? "" : ":";
        for (const char c : absolute(path)) {
            list += c == ':' || c == '\\' ? "\\" : "";
            list += c;
        }
    }
    return list;
}

void configure(const Options& options) {
    if (!options.configuration_file.empty() &&
        NorvaneSetConfigurationFile(absolute(options.configuration_file).c_str()) == FALSE) {
        throw std::bad_alloc();
    }
    if (!options.root.empty()) {
        set("--root", "stores", "Root", path_list(options.root));
    }
    if (!options.ca.empty()) {
        set("--ca", "stores", "CA", path_list(options.ca));
    }
    if (!options.cache_folder.empty()) {
        // The variable would win over the setting, and options win over everything.
        unsetenv("NORVANE_CACHE_DIR"); // NOLINT(concurrency-mt-unsafe): there are no threads yet
        set("--cache-dir", "retrieval", "cache_folder", absolute(options.cache_folder));
    }
    if (options.strict_pkup) {
        set("--strict-pkup", "registry", R"(HKLM\SOFTWARE\Norvane\PkiValidator\StrictPkupCheck)",
            "dword:1");
    }
}

bool has_sound_configuration(const FaultSink& faults) {
    struct Context {
        const FaultSink& faults;
        bool sound;
    };
    Context context{faults, true};
    const auto tell = [](LPCSTR file, DWORD line, LPCSTR text, void* argument) -> BOOL {
        auto& told = *static_cast<Context*>(argument);
        told.faults(line == 0 ? file : std::string(file) + ":" + std::to_string(line), text);
        told.sound = false;
        return TRUE;
    };
    if (NorvaneEnumConfigurationProblems(tell, &context) == FALSE) {
        if (GetLastError() == ERROR_NOT_ENOUGH_MEMORY) {
            throw std::bad_alloc();
        }
        faults("the configuration", "its files cannot be read now");
        return false;
    }
    return context.sound;
}

} // namespace norvane
