#include "platform/config/Configuration.h"

#include "platform/ForkLocks.h"
#include "platform/NeverDestroyed.h"
#include "platform/WholeFile.h"
#include "platform/config/ConfigurationKeys.h"
#include "platform/config/ConfigurationText.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>

namespace norvane {
namespace {

constexpr const char* machine_file = "/etc/norvane/norvane.conf";
constexpr const char* file_name = "norvane.conf";
constexpr const char* file_variable = "NORVANE_CONFIG";

void follow_file(const ConfigurationFile& file, const UserFolders& folders,
                 Configuration& configuration) {
    // Throws where the file may be readable at the next attempt: the process is not to go on with
    // another configuration than it has.
    auto outcome = read_whole_file(file.path, {.max_size = max_configuration_file_size});
    if (const auto* const whole = std::get_if<WholeFile>(&outcome)) {
        follow_configuration_text(whole->bytes.text(), file.path, folders, configuration);
        return;
    }
    auto& fault = std::get<FileFault>(outcome);
    if (fault.kind != FileFault::Kind::absent || file.presence == FilePresence::required) {
        configuration.problems.push_back(
            {.file = file.path, .line = 0, .text = std::move(fault.text)});
    }
}

} // namespace

const PathList* Configuration::store_paths(std::string_view name) const {
    const auto found = stores.find(name);
    return found != stores.end() ? &found->second : nullptr;
}

Configuration load_configuration(std::span<const ConfigurationFile> files) {
    const UserFolders folders = user_folders();
    Configuration loaded = default_configuration(folders);
    for (const ConfigurationFile& file : files) {
        follow_file(file, folders, loaded);
    }
    return loaded;
}

namespace {

/// What the process knows about its configuration, for all threads.
struct Process {
    struct Override {
        const ConfigurationKey* row;
        std::string key;
        std::string value;
    };
    /// Null until it is loaded, and never destroyed.
    std::atomic<const Configuration*> loaded = nullptr;
    std::mutex mutex; ///< For loading, and for what follows.
    std::vector<Override> overrides;
    std::optional<std::filesystem::path> named_file;
};

constinit NeverDestroyed<Process> own_process;

Process& process() { return own_process.object; }

} // namespace

void visit_configuration_locks(LockVisitor visit) { visit(process().mutex); }

std::vector<ConfigurationFile> standard_configuration_files(const std::filesystem::path& named) {
    std::vector<ConfigurationFile> files{{machine_file, FilePresence::optional}};
    if (const auto folder = user_folders().config; !folder.empty()) {
        files.push_back({folder / file_name, FilePresence::optional});
    }
    const char* const variable = trusted_environment(file_variable);
    if (!named.empty()) {
        files.push_back({named, FilePresence::required});
    } else if (variable != nullptr && *variable != 0) {
        files.push_back({variable, FilePresence::required});
    }
    return files;
}

Steering override_configuration(std::string_view section, std::string_view key,
                                std::string_view value) {
    const ConfigurationKey* const row = find_configuration_key(section, key);
    if (row == nullptr) {
        return Steering::no_such_key;
    }
    Configuration scratch;
    switch (row->assign(scratch, key, value, user_folders())) {
    case Assignment::done:
        break;
    case Assignment::bad_name:
        return Steering::no_such_key;
    case Assignment::bad_value:
        return Steering::bad_value;
    }
    Process& own = process();
    const std::lock_guard lock(own.mutex);
    if (own.loaded.load(std::memory_order_relaxed) != nullptr) {
        return Steering::too_late;
    }
    own.overrides.push_back({row, std::string(key), std::string(value)});
    return Steering::done;
}

Steering name_configuration_file(std::filesystem::path path) {
    Process& own = process();
    const std::lock_guard lock(own.mutex);
    if (own.loaded.load(std::memory_order_relaxed) != nullptr) {
        return Steering::too_late;
    }
    own.named_file = std::move(path);
    return Steering::done;
}

const Configuration& configuration() {
    Process& own = process();
    if (const Configuration* present = own.loaded.load(std::memory_order_acquire)) {
        return *present;
    }
    const std::lock_guard lock(own.mutex);
    if (own.loaded.load(std::memory_order_relaxed) == nullptr) {
        auto made = std::make_unique<Configuration>(
            load_configuration(standard_configuration_files(own.named_file.value_or(""))));
        for (const Process::Override& each : own.overrides) {
            static_cast<void>(
                assign_configuration(*each.row, *made, each.key, each.value, user_folders()));
        }
        own.loaded.store(made.release(), std::memory_order_release);
    }
    return *own.loaded.load(std::memory_order_relaxed);
}

} // namespace norvane
