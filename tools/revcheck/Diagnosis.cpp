#include "Diagnosis.h"

#include "PathWalk.h"

#include "values/Exceptions.h"

#include <array>
#include <cstdio>
#include <string_view>

namespace norvane {
namespace {

/// The platform's words for an error code.
std::string words_for(DWORD error) {
    std::array<char, 256> text{};
    const DWORD length =
        FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error,
                       0, text.data(), static_cast<DWORD>(text.size()), nullptr);
    const std::string_view words(text.data(), length);
    return std::string(words.substr(0, words.find_last_not_of("\r\n") + 1));
}

/// Why the check was given up, whatever the material is like.
std::string reason_of_failure(DWORD process_failure) {
    if (process_failure == ERROR_NOT_ENOUGH_QUOTA) {
        return "a limit was reached, and the check given up; see section [limits] of the "
               "configuration";
    }
    return "the check was given up: " + words_for(process_failure);
}

/// Why the platform answers so, where its code alone says it; empty for the usual one.
std::string platform_reason(DWORD error) {
    switch (error) {
    case CRYPT_E_NO_REVOCATION_CHECK:
        return {};
    case CRYPT_E_NO_REVOCATION_DLL:
        return "no revocation module could be loaded; see section [providers] of the configuration";
    case CRYPT_E_REVOCATION_OFFLINE:
        return "a revocation module could not reach its server";
    default:
        break;
    }
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "the platform's revocation check failed with 0x%08x",
                  error);
    return text.data();
}

/// The store of the configuration, or an empty one.
StoreHolder system_store(const WCHAR* name) {
    constexpr DWORD flags =
        CERT_SYSTEM_STORE_CURRENT_USER | CERT_STORE_READONLY_FLAG | CERT_STORE_OPEN_EXISTING_FLAG;
    StoreHolder store(CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, flags, name));
    return store != nullptr ? std::move(store) : make_store();
}

void note_skipped_files(const WCHAR* store, std::vector<std::string>& lines) {
    const auto note = [](LPCSTR file, LPCSTR reason, void* argument) -> BOOL {
        static_cast<std::vector<std::string>*>(argument)->push_back(
            "of a system store, " + std::string(file) + " could not be read: " + reason);
        return TRUE;
    };
    static_cast<void>(NorvaneEnumSkippedStoreFiles(store, note, &lines));
}

} // namespace

std::vector<std::string> diagnose(PCCERT_CONTEXT certificate, const Verdict& verdict,
                                  const Options& options, const Stores& stores) {
    if (verdict.process_failure != ERROR_SUCCESS) {
        std::vector<std::string> lines{reason_of_failure(verdict.process_failure)};
        note_skipped_files(NORVANE_W("Root"), lines);
        note_skipped_files(NORVANE_W("CA"), lines);
        return lines;
    }
    if (std::string reason = platform_reason(verdict.error); !reason.empty()) {
        return {std::move(reason)};
    }
    const StoreHolder root = system_store(NORVANE_W("Root"));
    const StoreHolder ca = system_store(NORVANE_W("CA"));
    Surroundings around{.root = root.get(),
                        .certs = {root.get(), ca.get()},
                        .crls = stores.crls != nullptr ? stores.crls.get() : ca.get(),
                        .issuer = stores.issuer.get(),
                        .time = verdict.time,
                        .retrieval =
                            options.cache_only ? Retrieval::cache_only : Retrieval::from_network};
    for (const StoreHolder& store : stores.certs) {
        around.certs.push_back(store.get());
    }
    std::vector<std::string> lines;
    try {
        lines = walk_path(certificate, around);
    } catch (const CAException& error) {
        lines = {"the certificate or its issuer cannot be looked into: " +
                 std::string(error.what())};
    }
    if (options.root.empty()) {
        note_skipped_files(NORVANE_W("Root"), lines);
    }
    if (options.ca.empty()) {
        note_skipped_files(NORVANE_W("CA"), lines);
    }
    return lines;
}

} // namespace norvane
