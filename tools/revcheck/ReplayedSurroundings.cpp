#include "ReplayedSurroundings.h"

#include "Configure.h"
#include "EvidenceSettings.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <new>
#include <system_error>
#include <unistd.h>

namespace norvane {
namespace {

namespace fs = std::filesystem;

bool is_crl(const std::string& name) { return name.ends_with(".crl"); }

fs::path make_private_folder() {
    std::error_code error;
    std::string path = (fs::temp_directory_path(error) / "revcheck-replay-XXXXXX").string();
    if (error || mkdtemp(path.data()) == nullptr) {
        throw ReplayFailure("no temporary folder can be made");
    }
    return path;
}

void set(const std::string& section, const std::string& key, const std::string& value) {
    if (NorvaneSetConfiguration(section.c_str(), key.c_str(), value.c_str()) == FALSE) {
        if (GetLastError() == ERROR_NOT_ENOUGH_MEMORY) {
            throw std::bad_alloc();
        }
        throw BadEvidence("manifest.json: \"" + value + "\" cannot be used for " + section + "." +
                          key);
    }
}

template <class Map>
const auto& value_of(const Map& map, const std::string& name) {
    const auto found = map.find(name);
    if (found == map.end()) {
        throw BadEvidence("manifest.json does not tell " + name);
    }
    return found->second;
}

/// As section [limits] has it.
std::string limit_text(Resource resource, std::uint64_t amount) {
    return std::to_string(amount) + (resource == Resource::retrieval_time ? "ms" : "");
}

} // namespace

ReplayedSurroundings::ReplayedSurroundings(const Evidence& evidence, const Members& members)
    : members_(members) {
    lay_store("Root", evidence.stores.root);
    lay_store("CA", evidence.stores.ca);
    configure(evidence);
    open_stores(evidence.stores);
}

PrivateFolder::PrivateFolder() : path_(make_private_folder()) {
    // Whoever closes the pipe that the program writes to would leave the folder behind.
    std::signal(SIGPIPE, SIG_IGN);
}

PrivateFolder::~PrivateFolder() {
    std::error_code error;
    fs::remove_all(path_, error);
}

/// The platform takes the files of a folder in the order of their names, which are our own.
void ReplayedSurroundings::lay_store(const char* name, const ObjectNames& objects) {
    const fs::path folder = folder_.path() / name;
    std::error_code error;
    fs::create_directory(folder, error);
    for (std::size_t i = 0; i < objects.size(); ++i) {
        std::array<char, 32> file_name{};
        std::snprintf(file_name.data(), file_name.size(), "%08zu.der", i);
        const std::string& content = members_.at(objects[i]);
        std::ofstream file(folder / file_name.data(), std::ios::binary);
        file.write(content.data(), static_cast<std::streamsize>(content.size()));
        file.close();
        if (!file) {
            throw ReplayFailure("the temporary folder cannot be written");
        }
    }
}

void ReplayedSurroundings::configure(const Evidence& evidence) const {
    // Stronger than the configuration. Without a folder of its own nothing is cached or noted.
    unsetenv("NORVANE_CACHE_DIR"); // NOLINT(concurrency-mt-unsafe): there are no other threads yet
    set("retrieval", "cache_folder", "");
    set("stores", "Root", path_list({(folder_.path() / "Root").string()}));
    set("stores", "CA", path_list({(folder_.path() / "CA").string()}));
    for (const EvidenceSetting& setting : evidence_settings) {
        const std::string& value = value_of(evidence.settings, name_of(setting));
        if (setting.required != nullptr && value != setting.required) {
            throw ReplayFailure("the decision was made with " + name_of(setting) + " \"" + value +
                                "\", which is not part of the evidence");
        }
        set(setting.section, setting.key, value);
    }
    for (const Resource resource : all_resources) {
        const std::string key(name_of(resource));
        set("limits", key, limit_text(resource, value_of(evidence.limits, key)));
    }
    set("registry", R"(HKLM\SOFTWARE\Norvane\PkiValidator\StrictPkupCheck)",
        evidence.strict_pkup ? "dword:1" : "dword:0");
}

/// In the order in which a run opens them: searches go by it.
void ReplayedSurroundings::open_stores(const EvidenceStores& stores) {
    for (const ObjectNames& objects : stores.certs) {
        stores_.certs.push_back(store_of(objects));
    }
    if (stores.crls) {
        stores_.crls = store_of(*stores.crls);
    }
    if (stores.issuer) {
        stores_.issuer = certificate(*stores.issuer);
    }
}

StoreHolder ReplayedSurroundings::store_of(const ObjectNames& objects) const {
    StoreHolder store = make_store();
    for (const std::string& name : objects) {
        const std::string& content = members_.at(name);
        const auto* const octets = reinterpret_cast<const BYTE*>(content.data());
        const auto size = static_cast<DWORD>(content.size());
        const auto add =
            is_crl(name)
                ? +[](HCERTSTORE to, const BYTE* data, DWORD length) {
                      return CertAddEncodedCRLToStore(to, X509_ASN_ENCODING, data, length,
                                                      CERT_STORE_ADD_USE_EXISTING, nullptr);
                  }
                : +[](HCERTSTORE to, const BYTE* data, DWORD length) {
                      return CertAddEncodedCertificateToStore(to, X509_ASN_ENCODING, data, length,
                                                              CERT_STORE_ADD_USE_EXISTING, nullptr);
                  };
        if (add(store.get(), octets, size) == FALSE) {
            throw BadEvidence("member " + name + " is not what its name says");
        }
    }
    return store;
}

CertificateHandle ReplayedSurroundings::certificate(const std::string& name) const {
    const std::string& content = members_.at(name);
    CertificateHandle made(CertCreateCertificateContext(
        X509_ASN_ENCODING, reinterpret_cast<const BYTE*>(content.data()),
        static_cast<DWORD>(content.size())));
    if (made == nullptr) {
        if (GetLastError() == ERROR_NOT_ENOUGH_MEMORY) {
            throw std::bad_alloc();
        }
        throw BadEvidence("member " + name + " is no certificate");
    }
    return made;
}

} // namespace norvane
