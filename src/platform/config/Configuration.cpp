#include "platform/config/Configuration.h"

#include "platform/config/ConfigurationKeys.h"
#include "platform/config/FileText.h"
#include "platform/config/IniReader.h"

#include <atomic>
#include <memory>
#include <mutex>

namespace norvane {
namespace {

constexpr const char* machine_file = "/etc/norvane/norvane.conf";
constexpr const char* file_name = "norvane.conf";
constexpr const char* file_variable = "NORVANE_CONFIG";

/// So many are enough to mend a file by; a hostile one shall not fill the memory with them.
constexpr std::size_t max_problems_of_file = 100;

/// Longer names and values are told in part.
constexpr std::size_t max_quoted_length = 200;

std::string quoted(std::string_view text) {
    std::string result = "\"";
    result += text.substr(0, max_quoted_length);
    return result += text.size() > max_quoted_length ? "...\"" : "\"";
}

/// Puts one file into the configuration.
class FileLoader {
  public:
    FileLoader(Configuration& configuration, const ConfigurationFile& file,
               const UserFolders& folders)
        : configuration_(configuration), file_(file), folders_(folders) {}

    void load() {
        const auto content = read_file_text(file_.path);
        if (const auto* text = std::get_if<std::string>(&content)) {
            follow(*text);
        } else if (const auto* fault = std::get_if<FileFault>(&content)) {
            add_problem(0, fault->text);
        } else if (file_.presence == FilePresence::required) {
            add_problem(0, "there is no such file");
        }
    }

  private:
    enum class Section : std::uint8_t { none, known, unknown };

    void follow(std::string_view text) {
        IniReader reader(text);
        while (const auto line = reader.next()) {
            switch (line->kind) {
            case IniLine::Kind::section:
                begin_section(*line);
                break;
            case IniLine::Kind::entry:
                follow_entry(*line);
                break;
            case IniLine::Kind::fault:
                add_problem(line->number, std::string(line->value));
                break;
            }
        }
    }

    void begin_section(const IniLine& line) {
        section_name_ = line.name;
        section_ = is_configuration_section(line.name) ? Section::known : Section::unknown;
        if (section_ == Section::unknown) {
            add_problem(line.number, "there is no section " + quoted(line.name));
        }
    }

    void follow_entry(const IniLine& line) {
        if (section_ != Section::known) {
            if (section_ == Section::none) {
                add_problem(line.number, "the key stands before the first section");
            }
            return;
        }
        const ConfigurationKey* row = find_configuration_key(section_name_, line.name);
        if (row == nullptr) {
            add_problem(line.number,
                        "section " + quoted(section_name_) + " has no key " + quoted(line.name));
            return;
        }
        note_repetition(line);
        switch (row->assign(configuration_, line.name, line.value, folders_)) {
        case Assignment::done:
            break;
        case Assignment::bad_name:
            add_problem(line.number,
                        "section " + quoted(section_name_) + " has no key " + quoted(line.name));
            break;
        case Assignment::bad_value:
            add_problem(line.number, quoted(line.value) + " is not " + std::string(row->kind));
            break;
        }
    }

    void note_repetition(const IniLine& line) {
        std::string name(section_name_);
        name += '\n';
        name += line.name;
        const auto [earlier, is_first] = lines_.try_emplace(std::move(name), line.number);
        if (!is_first) {
            add_problem(line.number, "key " + quoted(line.name) + " stands on line " +
                                         std::to_string(earlier->second) + " already");
        }
    }

    void add_problem(std::uint32_t line, std::string text) {
        if (problem_count_ > max_problems_of_file) {
            return;
        }
        if (problem_count_ == max_problems_of_file) {
            text = "there are more problems from here on";
        }
        ++problem_count_;
        configuration_.problems.push_back(
            {.file = file_.path, .line = line, .text = std::move(text)});
    }

    Configuration& configuration_;
    const ConfigurationFile& file_;
    const UserFolders& folders_;
    Section section_ = Section::none;
    std::string_view section_name_;
    ByName<std::uint32_t> lines_;
    std::size_t problem_count_ = 0;
};

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
    Configuration loaded;
    for (const ConfigurationKey& row : configuration_keys()) {
        if (row.key != any_key) {
            static_cast<void>(row.assign(loaded, row.key, row.default_value, folders));
        }
    }
    for (const ConfigurationFile& file : files) {
        FileLoader(loaded, file, folders).load();
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
