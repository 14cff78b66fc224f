#include "platform/config/ConfigurationText.h"

#include "platform/config/ConfigurationKeys.h"
#include "platform/config/IniReader.h"

#include <algorithm>
#include <iterator>

namespace norvane {
namespace {

/// So many are enough to mend a file by; a hostile one shall not fill the memory with them.
constexpr std::size_t max_problems_of_file = 100;

/// Longer names and values are told in part.
constexpr std::size_t max_quoted_length = 200;

/// The text in quotation marks, fit for a terminal.
std::string quoted(std::string_view text) {
    const auto is_control = [](char c) { return (c >= 0 && c < ' ') || c == '\x7F'; };
    std::string result = "\"";
    std::ranges::replace_copy_if(text.substr(0, max_quoted_length), std::back_inserter(result),
                                 is_control, '?');
    return result += text.size() > max_quoted_length ? "...\"" : "\"";
}

/// Puts the text of one file into the configuration.
class Follower {
  public:
    Follower(const std::filesystem::path& file, const UserFolders& folders,
             Configuration& configuration)
        : file_(file), folders_(folders), configuration_(configuration) {}

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

  private:
    enum class Section : std::uint8_t { none, known, unknown };

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
        switch (assign_configuration(*row, configuration_, line.name, line.value, folders_)) {
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
        const auto [earlier, is_first] =
            lines_.try_emplace(configuration_text_name(section_name_, line.name), line.number);
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
        configuration_.problems.push_back({.file = file_, .line = line, .text = std::move(text)});
    }

    const std::filesystem::path& file_;
    const UserFolders& folders_;
    Configuration& configuration_;
    Section section_ = Section::none;
    std::string_view section_name_;
    ByName<std::uint32_t> lines_;
    std::size_t problem_count_ = 0;
};

} // namespace

Configuration default_configuration(const UserFolders& folders) {
    Configuration defaults;
    for (const ConfigurationKey& row : configuration_keys()) {
        if (row.key != any_key) {
            static_cast<void>(
                assign_configuration(row, defaults, row.key, row.default_value, folders));
        }
    }
    return defaults;
}

void follow_configuration_text(std::string_view text, const std::filesystem::path& file,
                               const UserFolders& folders, Configuration& configuration) {
    Follower(file, folders, configuration).follow(text);
}

} // namespace norvane
