// Scripts for modules, and calls of the dispatcher.
#pragma once

#include "ScriptedModule.h"
#include "StoreMaterial.h"
#include "support/ConfiguredProcess.h"

#include <dlfcn.h>
#include <vector>

namespace norvane::testing {

// The script of a module, whether or not the dispatcher has loaded that yet.
inline Script& script_of(const char* path) {
    void* const library = dlopen(path, RTLD_NOW);
    EXPECT_NE(library, nullptr) << dlerror();
    return *static_cast<Script*>(dlsym(library, "script"));
}

// Runs `checks` in a process in which these modules answer, in this order.
[[nodiscard]] inline auto with_modules(const std::string& modules,
                                       const std::function<void()>& checks,
                                       const std::string& more = "") {
    return passes_when_configured("[providers]\nmodules = " + modules + "\n" + more, checks);
}
inline const std::string both_modules = MODULE_A ":" MODULE_B;

// Ten certificates that differ in their serial numbers, 0 to 9.
inline PCCERT_CONTEXT numbered(std::uint8_t number) {
    static const auto all = [] {
        std::vector<CertificateContext> made;
        for (std::uint8_t serial = 0; serial < 10; ++serial) {
            made.push_back(
                certificate_context(CertificateBuilder{.serial = {serial}}.sign(Key::ec(0))));
        }
        return made;
    }();
    return all.at(number).get();
}

struct Outcome {
    BOOL result;
    DWORD index;
    DWORD error;
    DWORD reason = 0;
    DWORD freshness = 0; // 0: none

    bool operator==(const Outcome&) const = default;
    friend void PrintTo(const Outcome& outcome, std::ostream* out) {
        *out << outcome.result << " index " << outcome.index << std::hex << " error "
             << outcome.error << " reason " << outcome.reason << " freshness " << outcome.freshness;
    }
};

inline Outcome ask(const std::vector<PCCERT_CONTEXT>& certificates, DWORD flags = 0,
                   PCERT_REVOCATION_PARA para = nullptr) {
    std::vector<PVOID> contexts;
    for (const PCCERT_CONTEXT certificate : certificates) {
        contexts.push_back(const_cast<CERT_CONTEXT*>(certificate));
    }
    CERT_REVOCATION_STATUS status{sizeof status, 99, 99, 99, 99, 99};
    SetLastError(ERROR_SUCCESS);
    const BOOL result = CertVerifyRevocation(X509_ASN_ENCODING, CERT_CONTEXT_REVOCATION_TYPE,
                                             static_cast<DWORD>(contexts.size()), contexts.data(),
                                             flags, para, &status);
    EXPECT_TRUE(result || GetLastError() == status.dwError);
    return {result, status.dwIndex, status.dwError, status.dwReason,
            status.fHasFreshnessTime ? status.dwFreshnessTime : 0};
}

// An answer that a module gives to whatever it is asked.
inline auto answering(DWORD error, DWORD reason = 0, DWORD freshness = 0) {
    return [=](const Question& question) -> BOOL {
        question.status.dwError = error;
        question.status.dwReason = reason;
        question.status.fHasFreshnessTime = freshness != 0;
        question.status.dwFreshnessTime = freshness;
        return error == ERROR_SUCCESS;
    };
}

} // namespace norvane::testing
