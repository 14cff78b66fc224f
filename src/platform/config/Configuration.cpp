#include "platform/config/Configuration.h"

#include "platform/config/ConfigurationKeys.h"
#include "platform/config/ConfigurationText.h"
#include "platform/config/FileText.h"

#include <atomic>
#include <memory>
#include <mutex>

namespace norvane {
namespace {

constexpr const char* machine_file = "/etc/norvane/norvane.conf";
constexpr const char* file_name = "norvane.conf";
constexpr const char* file_variable = "NORVANE_CONFIG";

void follow_file(const ConfigurationFile& file, const UserFolders& folders,
                 Configuration& configuration) {
    const auto content = read_file_text(file.path, max_configuration_file_size);
    if (const auto* text = std::get_if<std::string>(&content)) {
        follow_configuration_text(*text, file.path, folders, configuration);
        return;
    }
    const auto add_problem = [&](std::string text) {
        configuration.problems.push_back({.file = file.path, .line = 0, .text = std::move(text)});
    };
    if (const auto* fault = std::get_if<FileFault>(&content)) {
        add_problem(fault->text);
    } else if (file.presence == FilePresence::required) {
        add_problem("there is no such file");
    }
}

} // namespace

const PathList* Configuration::store_paths(std::string_view name) const {
    const auto found = stores.find(name);
    return found != stores.end() ? &found->second : nullptr;
}

std::vector<ConfigurationFile> standard_configuration_files() {
    std::vector<ConfigurationFile> files{{machine_file, FilePresence::optional}};
    if (const auto folder = user_folders().config; !folder.empty()) {
        files.push_back({folder / file_name, FilePresence::optional});
    }
    if (const char* named = trusted_environment(file_variable); named != nullptr && *named != 0) {
        files.push_back({named, FilePresence::required});
    }
    return files;
}

Configuration load_configuration(std::span<const ConfigurationFile> files) {
    const UserFolders folders = user_folders();
    Configuration loaded = default_configuration(folders);
    for (const ConfigurationFile& file : files) {
        follow_file(file, folders, loaded);
    }
    return loaded;
}

const Configuration& configuration() {
    static constinit std::atomic<const Configuration*> loaded{nullptr};
    static constinit std::mutex loading;
    if (const Configuration* present = loaded.load(std::memory_order_acquire)) {
        return *present;
    }
    const std::lock_guard lock(loading);
    if (loaded.load(std::memory_order_relaxed) == nullptr) {
        // Never destroyed: threads may outlive the destructors of the process.
        loaded.store(
            std::make_unique<Configuration>(load_configuration(standard_configuration_files()))
                .release(),
            std::memory_order_release);
    }
    return *loaded.load(std::memory_order_relaxed);
}

} // namespace norvane
