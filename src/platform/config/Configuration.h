#pragma once

#include "platform/config/AsciiCase.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace norvane {

/// Something in a file that could not be followed and was passed over.
struct ConfigurationProblem {
    std::filesystem::path file;
    std::uint32_t line; ///< from 1; 0 for the file as a whole
    std::string text;
};

/// A REG_DWORD, a REG_QWORD or, in UTF-8, a REG_SZ.
using RegistryValue = std::variant<std::uint32_t, std::uint64_t, std::string>;

using PathList = std::vector<std::filesystem::path>;

/// Entries by name, upper and lower case ASCII letters being the same.
template <class Value>
using ByName = std::map<std::string, Value, AsciiCaseLess>;

/// The settings of the platform, with every default in its place. The keys of the files, their
/// defaults and their meaning stand in ConfigurationKeys.cpp, in one table.
///
/// Only the functions below make one, and nobody changes it afterwards.
struct Configuration {
    /// By full path, the root in its long form:
    /// `HKEY_LOCAL_MACHINE\SOFTWARE\Norvane\PkiValidator\StrictPkupCheck`. The limits of the
    /// revocation module are among them: section [limits] has short names for those.
    ByName<RegistryValue> registry;
    /// Files and folders, absolute, of each named system store. A path need not exist.
    ByName<PathList> stores;
    /// The library of each component, by CLSID with braces. An absolute path, or a bare file name,
    /// for which see ModulePath.h.
    ByName<std::filesystem::path> components;
    /// Libraries of the revocation modules in the order of asking, named as components are.
    PathList revocation_modules;

    std::filesystem::path cache_folder; ///< empty: retrieved objects are not kept
    std::uint64_t cache_size_bytes = 0;
    std::uint64_t response_limit_bytes = 0;
    std::uint64_t certificate_limit_bytes = 0;
    std::uint32_t max_redirects = 0;
    std::vector<std::string> url_schemes; ///< in small letters
    std::chrono::milliseconds retrieval_timeout{};
    std::chrono::milliseconds failure_memory{}; ///< 0: failures are not remembered
    std::string proxy;                          ///< URL; empty: none

    bool sha1 = false;

    /// What each key was last given, as a file would give it: by section, a line end, and key.
    ByName<std::string> texts;

    /// In the order of files and lines.
    std::vector<ConfigurationProblem> problems;

    /// The paths of a system store; null if there is no store of this name.
    [[nodiscard]] const PathList* store_paths(std::string_view name) const;
};

enum class FilePresence { optional, required };

struct ConfigurationFile {
    std::filesystem::path path;
    FilePresence presence; ///< whether it is a problem if there is no such file
};

/// The files of this process, those that override others last: the machine's, the user's, and the
/// one that the program has `named` or else NORVANE_CONFIG names. In set-uid programs the
/// environment is not to be trusted, and only the machine's and the program's remain.
[[nodiscard]] std::vector<ConfigurationFile>
standard_configuration_files(const std::filesystem::path& named = {});

/// Reads files, of which later ones override earlier ones key by key. What cannot be followed
/// becomes a problem and leaves in force what an earlier file or the default says. Throws
/// std::bad_alloc, and UnreadableFile if a file may be readable at the next attempt.
[[nodiscard]] Configuration load_configuration(std::span<const ConfigurationFile> files);

enum class Steering : std::uint8_t { done, too_late, no_such_key, bad_value };

// What a program lays down for its process before the configuration is loaded; afterwards it is too
// late. Each throws std::bad_alloc and nothing else.

/// A key over what all files say, as one line of a file would give it.
[[nodiscard]] Steering override_configuration(std::string_view section, std::string_view key,
                                              std::string_view value);
/// The file in the place of the one that NORVANE_CONFIG names.
[[nodiscard]] Steering name_configuration_file(std::filesystem::path path);

/// The configuration of this process, from the standard files and what the program laid down. It is
/// loaded at the first call, by
/// one thread, and stays the same and in its place from then on. Throws std::bad_alloc if there is
/// no memory to load it; the next call tries again.
[[nodiscard]] const Configuration& configuration();

} // namespace norvane
