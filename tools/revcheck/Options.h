#pragma once

#include <norvane/wincrypt.h>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace norvane {

/// A command line that cannot be followed; `what` says why.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// How the program presents verdicts.
enum class Presentation : std::uint8_t { for_people, json, none };

/// What one call of the platform's revocation check is about.
enum class Grouping : std::uint8_t {
    single, ///< one certificate
    list,   ///< all of them, up to the first that is not good
};

/// What the command line asks for.
struct Options {
    std::vector<std::string> certificates; ///< files and folders; "-" is standard input
    std::vector<std::string> root;         ///< in place of the system's store; empty: that store
    std::vector<std::string> ca;
    std::vector<std::string> certs; ///< a store each
    std::vector<std::string> crls;
    bool recursive = false;       ///< go into folders within the folders of certificates
    std::string issuer;           ///< empty: no hint
    std::optional<FILETIME> time; ///< nothing: the present
    std::optional<DWORD> timeout_ms;
    bool accumulative = false;
    bool cache_only = false;
    std::string cache_folder;
    bool strict_pkup = false;
    std::string configuration_file;
    bool explain = false; ///< the whole record is to be shown
    std::string report;   ///< a file for the page of the run; empty: none is made
    std::string evidence; ///< a file to write; empty: none
    std::string replay;   ///< an evidence to decide again from, in place of all but presentation
    Grouping grouping = Grouping::single;
    Presentation presentation = Presentation::for_people;

    /// What is to be printed instead of checking: the help or the version. Empty: nothing.
    std::string text;
};

/// Throws UsageError.
[[nodiscard]] Options parse_options(int argc, const char* const* argv);

} // namespace norvane
