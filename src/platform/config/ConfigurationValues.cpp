#include "platform/config/ConfigurationValues.h"

#include "platform/config/Trim.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <utility>

namespace norvane {
namespace {

constexpr char list_separator = ':';
constexpr char list_escape = '\\';
constexpr std::string_view known_schemes[] = {"http", "https", "ldap", "ldaps", "file"};

struct SizeUnit {
    std::string_view suffix;
    int shift;
};
constexpr SizeUnit size_units[] = {{"K", 10}, {"M", 20}, {"G", 30}};

struct FolderName {
    std::string_view name;
    std::filesystem::path UserFolders::*folder;
};
constexpr FolderName folder_names[] = {
    {"~", &UserFolders::home}, {"$CONFIG", &UserFolders::config}, {"$CACHE", &UserFolders::cache}};

struct RegistryRoot {
    std::string_view name;
    std::string_view short_name;
};
constexpr RegistryRoot registry_roots[] = {{"HKEY_LOCAL_MACHINE", "HKLM"},
                                           {"HKEY_CURRENT_USER", "HKCU"}};

/// A number that takes up the whole text.
template <class Number>
std::optional<Number> whole_number(std::string_view text, int base = 10) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, base);
    return error == std::errc{} && stop == end ? std::optional(number) : std::nullopt;
}

/// Whether `text` ends in `suffix`, which is then taken off.
bool take_suffix(std::string_view& text, std::string_view suffix) {
    const bool found = text.ends_with(suffix);
    text.remove_suffix(found ? suffix.size() : 0);
    return found;
}

bool take_prefix_ignoring_case(std::string_view& text, std::string_view prefix) {
    const bool found = equal_ignoring_case(text.substr(0, prefix.size()), prefix);
    text.remove_prefix(found ? prefix.size() : 0);
    return found;
}

struct ListElement {
    std::string text;
    bool more; ///< whether a separator stands behind it
};

/// Takes the text up to the next separator off `text`. A separator that belongs to a path has a
/// backslash before it, and so has a backslash.
ListElement take_element(std::string_view& text) {
    ListElement element{};
    while (!text.empty() && !element.more) {
        const bool escape = text.front() == list_escape && text.size() > 1 &&
                            (text[1] == list_separator || text[1] == list_escape);
        text.remove_prefix(escape ? 1 : 0);
        element.more = !escape && text.front() == list_separator;
        if (!element.more) {
            element.text += text.front();
        }
        text.remove_prefix(1);
    }
    return element;
}

template <class ParseElement>
std::optional<PathList> parse_list(std::string_view text, const UserFolders& folders,
                                   ParseElement parse_element) {
    PathList list;
    for (bool more = !text.empty(); more;) {
        const ListElement next = take_element(text);
        ParsedPath path = parse_element(trim(next.text), folders);
        if (trim(next.text).empty() || !path) {
            return std::nullopt;
        }
        if (!path->empty()) {
            list.push_back(std::move(*path));
        }
        more = next.more;
    }
    return list;
}

} // namespace

std::optional<bool> parse_on_off(std::string_view text, const UserFolders& /*folders*/) {
    const bool on = equal_ignoring_case(text, "on");
    return on || equal_ignoring_case(text, "off") ? std::optional(on) : std::nullopt;
}

std::optional<std::uint32_t> parse_count(std::string_view text, const UserFolders& /*folders*/) {
    return whole_number<std::uint32_t>(text);
}

std::optional<std::uint64_t> parse_size(std::string_view text, const UserFolders& /*folders*/) {
    int shift = 0;
    for (const SizeUnit& unit : size_units) {
        if (take_suffix(text, unit.suffix)) {
            shift = unit.shift;
            break;
        }
    }
    const auto number = whole_number<std::uint64_t>(trim(text));
    if (!number || *number > std::numeric_limits<std::uint64_t>::max() >> shift) {
        return std::nullopt;
    }
    return *number << shift;
}

std::optional<std::chrono::milliseconds> parse_duration(std::string_view text,
                                                        const UserFolders& /*folders*/) {
    const bool in_milliseconds = take_suffix(text, "ms");
    if (!in_milliseconds && !take_suffix(text, "s")) {
        return std::nullopt;
    }
    const auto number = whole_number<std::uint32_t>(trim(text));
    if (!number) {
        return std::nullopt;
    }
    const std::chrono::milliseconds duration =
        in_milliseconds ? std::chrono::milliseconds{*number} : std::chrono::seconds{*number};
    if (duration.count() > std::numeric_limits<std::uint32_t>::max()) {
        return std::nullopt;
    }
    return duration;
}

ParsedPath parse_path(std::string_view text, const UserFolders& folders) {
    if (text.empty() || text.front() == '/') {
        return std::filesystem::path(text);
    }
    const auto first = text.substr(0, text.find('/'));
    const auto* found = std::ranges::find(folder_names, first, &FolderName::name);
    if (found == std::end(folder_names)) {
        return std::nullopt;
    }
    std::filesystem::path path = folders.*found->folder;
    return path.empty() ? path : path.concat(text.substr(first.size()));
}

std::optional<PathList> parse_paths(std::string_view text, const UserFolders& folders) {
    return parse_list(text, folders, parse_path);
}

ParsedPath parse_module(std::string_view text, const UserFolders& folders) {
    const bool bare_name = text.find('/') == text.npos && !text.starts_with('~') &&
                           !text.starts_with('$') && text != "." && text != "..";
    ParsedPath path = bare_name ? ParsedPath(text) : parse_path(text, folders);
    return text.empty() ? std::nullopt : path;
}

std::optional<PathList> parse_modules(std::string_view text, const UserFolders& folders) {
    return parse_list(text, folders, parse_module);
}

std::optional<std::vector<std::string>> parse_schemes(std::string_view text,
                                                      const UserFolders& /*folders*/) {
    std::vector<std::string> schemes;
    while (!(text = trim(text)).empty()) {
        const std::string_view word = text.substr(0, text.find_first_of(" \t"));
        text.remove_prefix(word.size());
        const auto* known = std::ranges::find_if(known_schemes, [word](std::string_view scheme) {
            return equal_ignoring_case(word, scheme);
        });
        if (known == std::end(known_schemes)) {
            return std::nullopt;
        }
        schemes.emplace_back(*known);
    }
    return schemes;
}

std::optional<std::string> parse_text(std::string_view text, const UserFolders& /*folders*/) {
    return std::string(text);
}

std::optional<RegistryValue> parse_registry_value(std::string_view text,
                                                  const UserFolders& /*folders*/) {
    if (take_prefix_ignoring_case(text, "string:")) {
        return RegistryValue(std::string(trim(text)));
    }
    if (!take_prefix_ignoring_case(text, "dword:")) {
        return std::nullopt;
    }
    text = trim(text);
    const int base = take_prefix_ignoring_case(text, "0x") ? 16 : 10;
    const auto number = whole_number<std::uint32_t>(text, base);
    return number ? std::optional<RegistryValue>(*number) : std::nullopt;
}

std::optional<std::string> parse_registry_path(std::string_view text) {
    constexpr std::string_view empty_name = "\\\\";
    for (const RegistryRoot& root : registry_roots) {
        std::string_view path = text;
        const bool found = take_prefix_ignoring_case(path, root.name) ||
                           take_prefix_ignoring_case(path, root.short_name);
        if (found && path.size() > 1 && path.front() == '\\' && path.back() != '\\' &&
            path.find(empty_name) == path.npos) {
            return std::string(root.name).append(path);
        }
    }
    return std::nullopt;
}

std::optional<std::string> parse_store_name(std::string_view text) {
    return text.empty() ? std::nullopt : std::optional<std::string>(text);
}

std::optional<std::string> parse_class_id(std::string_view text) {
    constexpr std::string_view form = "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}";
    const auto fits = [](char c, char expected) {
        const char lower = to_ascii_lower(c);
        const bool hexadecimal = (c >= '0' && c <= '9') || (lower >= 'a' && lower <= 'f');
        return expected == 'x' ? hexadecimal : c == expected;
    };
    return std::ranges::equal(text, form, fits) ? std::optional<std::string>(text) : std::nullopt;
}

} // namespace norvane
