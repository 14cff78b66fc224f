#pragma once

#include "platform/config/Configuration.h"
#include "platform/config/UserFolders.h"

#include <optional>
#include <string_view>

namespace norvane {

// Each reads the text of one kind of value and gives nothing if the text is none of that kind.
// White space around the text is gone already. The words are what a message calls the kind.

namespace value_kind {
inline constexpr std::string_view on_off = "on or off";
inline constexpr std::string_view count = "a count below 2^32";
inline constexpr std::string_view size = "a size in bytes, or one with K, M or G, such as 64M";
inline constexpr std::string_view duration = "a time with its unit, such as 500ms or 15s";
inline constexpr std::string_view path = "an absolute path";
inline constexpr std::string_view paths = "absolute paths with colons between them";
inline constexpr std::string_view module = "an absolute path or a bare file name";
inline constexpr std::string_view modules =
    "absolute paths or bare file names, with colons between them";
inline constexpr std::string_view schemes = "words out of http, https, ldap, ldaps and file";
inline constexpr std::string_view text = "a text";
inline constexpr std::string_view registry_value = "dword: with a number, or string: with a text";
} // namespace value_kind

using ParsedPath = std::optional<std::filesystem::path>;

[[nodiscard]] std::optional<bool> parse_on_off(std::string_view text, const UserFolders&);
[[nodiscard]] std::optional<std::uint32_t> parse_count(std::string_view text, const UserFolders&);
/// K, M and G are powers of 1024.
[[nodiscard]] std::optional<std::uint64_t> parse_size(std::string_view text, const UserFolders&);
/// Below 2^32 milliseconds.
[[nodiscard]] std::optional<std::chrono::milliseconds> parse_duration(std::string_view text,
                                                                      const UserFolders&);
/// `~`, `$CONFIG` and `$CACHE` in the place of the first folder are the user's home and the user's
/// folders of this product. An empty text, or a folder of a user that is not known, gives the empty
/// path.
[[nodiscard]] ParsedPath parse_path(std::string_view text, const UserFolders& folders);
/// As above, without the empty ones. "\:" is a colon within a path and "\\" a backslash.
[[nodiscard]] std::optional<PathList> parse_paths(std::string_view text,
                                                  const UserFolders& folders);
[[nodiscard]] ParsedPath parse_module(std::string_view text, const UserFolders& folders);
[[nodiscard]] std::optional<PathList> parse_modules(std::string_view text,
                                                    const UserFolders& folders);
[[nodiscard]] std::optional<std::vector<std::string>> parse_schemes(std::string_view text,
                                                                    const UserFolders&);
[[nodiscard]] std::optional<std::string> parse_text(std::string_view text, const UserFolders&);
[[nodiscard]] std::optional<RegistryValue> parse_registry_value(std::string_view text,
                                                                const UserFolders&);

// Names of entries, in the form in which they are kept.

/// A path in the registry, with the root in its long form.
[[nodiscard]] std::optional<std::string> parse_registry_path(std::string_view text);
[[nodiscard]] std::optional<std::string> parse_store_name(std::string_view text);
/// "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}", hexadecimal.
[[nodiscard]] std::optional<std::string> parse_class_id(std::string_view text);

} // namespace norvane
