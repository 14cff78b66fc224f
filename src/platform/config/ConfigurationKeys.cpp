#include "platform/config/ConfigurationKeys.h"

#include "platform/config/ConfigurationValues.h"

#include <algorithm>
#include <utility>

namespace norvane {
namespace {

/// For a setting: the parser of its kind, and where it goes.
template <auto parse, auto member>
Assignment set(Configuration& configuration, std::string_view /*key*/, std::string_view value,
               const UserFolders& folders) {
    auto parsed = parse(value, folders);
    if (!parsed) {
        return Assignment::bad_value;
    }
    configuration.*member = std::move(*parsed);
    return Assignment::done;
}

/// For an entry of a table: the parsers of its name and of its kind, and the table.
template <auto parse_name, auto parse, auto member>
Assignment enter(Configuration& configuration, std::string_view key, std::string_view value,
                 const UserFolders& folders) {
    auto name = parse_name(key);
    if (!name) {
        return Assignment::bad_name;
    }
    auto parsed = parse(value, folders);
    if (!parsed) {
        return Assignment::bad_value;
    }
    (configuration.*member).insert_or_assign(std::move(*name), std::move(*parsed));
    return Assignment::done;
}

std::uint64_t number_of(std::uint64_t number) { return number; }
std::uint64_t number_of(std::chrono::milliseconds time) {
    return static_cast<std::uint64_t>(time.count());
}

/// For a limit of the revocation module: the parser of its kind, and its name in the registry.
template <auto parse, const char* value_name>
Assignment set_limit(Configuration& configuration, std::string_view /*key*/, std::string_view value,
                     const UserFolders& folders) {
    const auto parsed = parse(value, folders);
    if (!parsed) {
        return Assignment::bad_value;
    }
    configuration.registry.insert_or_assign(
        std::string(R"(HKEY_LOCAL_MACHINE\SOFTWARE\Norvane\PkiValidator\)") + value_name,
        number_of(*parsed));
    return Assignment::done;
}

constexpr char max_signature_verifications[] = "MaxSignatureVerifications";
constexpr char max_hashed_bytes[] = "MaxHashedBytes";
constexpr char max_shown_objects[] = "MaxShownObjects";
constexpr char max_retrievals[] = "MaxRetrievals";
constexpr char max_retrieval_milliseconds[] = "MaxRetrievalMilliseconds";

constexpr auto enter_registry_value =
    enter<parse_registry_path, parse_registry_value, &Configuration::registry>;
constexpr auto enter_store = enter<parse_store_name, parse_paths, &Configuration::stores>;
constexpr auto enter_component = enter<parse_class_id, parse_module, &Configuration::components>;

// One row for each key, so long as it may be.
// clang-format off
constexpr ConfigurationKey keys[] = {
    {"registry", any_key, value_kind::registry_value, "",
     "A value of the registry, by its full path, which begins with HKLM or HKCU.",
     enter_registry_value},

    {"stores", "Root", value_kind::paths,
     "/etc/norvane/stores/Root:$CONFIG/stores/Root:/etc/ssl/certs/ca-certificates.crt",
     "Files and folders of the trusted roots.",
     enter_store},
    {"stores", "CA", value_kind::paths, "/etc/norvane/stores/CA:$CONFIG/stores/CA",
     "Files and folders of intermediate certificates and of CRLs.",
     enter_store},
    {"stores", any_key, value_kind::paths, "",
     "Files and folders of the system store of this name.",
     enter_store},

    {"retrieval", "cache_folder", value_kind::path, "$CACHE",
     "Where retrieved objects are kept; none keeps nothing.",
     set<parse_path, &Configuration::cache_folder>},
    {"retrieval", "cache_size", value_kind::size, "1G",
     "What the cache folder may hold in all.",
     set<parse_size, &Configuration::cache_size_bytes>},
    {"retrieval", "response_limit", value_kind::size, "512M",
     "The largest response that is retrieved for CRLs.",
     set<parse_size, &Configuration::response_limit_bytes>},
    {"retrieval", "certificate_limit", value_kind::size, "1M",
     "The largest response that is retrieved for certificates.",
     set<parse_size, &Configuration::certificate_limit_bytes>},
    {"retrieval", "redirects", value_kind::count, "5",
     "How many redirections of HTTP one retrieval follows.",
     set<parse_count, &Configuration::max_redirects>},
    {"retrieval", "schemes", value_kind::schemes, "http https ldap ldaps",
     "The schemes of URLs that are retrieved at all.",
     set<parse_schemes, &Configuration::url_schemes>},
    {"retrieval", "timeout", value_kind::duration, "15s",
     "The time for a retrieval whose caller gives none.",
     set<parse_duration, &Configuration::retrieval_timeout>},
    {"retrieval", "failure_memory", value_kind::duration, "30s",
     "How long a URL that failed is not asked again; 0s asks it each time.",
     set<parse_duration, &Configuration::failure_memory>},
    {"retrieval", "proxy", value_kind::text, "",
     "URL of the proxy for HTTP; none goes without.",
     set<parse_text, &Configuration::proxy>},

    {"providers", "modules", value_kind::modules, "norvane_revocation.so",
     "The revocation modules that are asked, in this order.",
     set<parse_modules, &Configuration::revocation_modules>},

    // What has no default here has that of the revocation module.
    {"limits", "signature_verifications", value_kind::count, "",
     "How many signatures one question to the revocation check may verify.",
     set_limit<parse_count, max_signature_verifications>},
    {"limits", "hashed_bytes", value_kind::size, "",
     "How much one question to the revocation check may hash for signatures.",
     set_limit<parse_size, max_hashed_bytes>},
    {"limits", "shown_objects", value_kind::count, "",
     "How often stores may show a certificate or a CRL to one question.",
     set_limit<parse_count, max_shown_objects>},
    {"limits", "retrievals", value_kind::count, "",
     "How often one question to the revocation check may ask servers.",
     set_limit<parse_count, max_retrievals>},
    {"limits", "retrieval_time", value_kind::duration, "",
     "How long the answers of servers to one question may take together.",
     set_limit<parse_duration, max_retrieval_milliseconds>},

    {"crypto", "sha1", value_kind::on_off, "on",
     "Whether signatures over SHA-1 are verified.",
     set<parse_on_off, &Configuration::sha1>},

    {"com", "{1FDD1FC3-6347-49DF-BDAB-E465BF32AD92}", value_kind::module, "norvane_pkup.so",
     "The library of the component that judges private key usage periods.",
     enter_component},
    {"com", any_key, value_kind::module, "",
     "The library of the component with this CLSID.",
     enter_component},
};
// clang-format on

} // namespace

std::span<const ConfigurationKey> configuration_keys() noexcept { return keys; }

bool is_configuration_section(std::string_view section) noexcept {
    return std::ranges::any_of(keys, [section](const ConfigurationKey& row) {
        return equal_ignoring_case(row.section, section);
    });
}

const ConfigurationKey* find_configuration_key(std::string_view section,
                                               std::string_view key) noexcept {
    const auto* found = std::ranges::find_if(keys, [&](const ConfigurationKey& row) {
        return equal_ignoring_case(row.section, section) &&
               (row.key == any_key || equal_ignoring_case(row.key, key));
    });
    return found != std::end(keys) ? found : nullptr;
}

std::string configuration_text_name(std::string_view section, std::string_view key) {
    std::string name(section);
    name += '\n';
    return name += key;
}

Assignment assign_configuration(const ConfigurationKey& row, Configuration& configuration,
                                std::string_view key, std::string_view value,
                                const UserFolders& folders) {
    const Assignment outcome = row.assign(configuration, key, value, folders);
    if (outcome == Assignment::done) {
        configuration.texts.insert_or_assign(configuration_text_name(row.section, key),
                                             std::string(value));
    }
    return outcome;
}

} // namespace norvane
