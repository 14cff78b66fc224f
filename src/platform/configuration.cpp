#include "platform/config/Configuration.h"
#include "platform/config/ConfigurationKeys.h"

#include "platform/store/guarded.h"

namespace {

using norvane::Steering;

BOOL told(Steering outcome) noexcept {
    switch (outcome) {
    case Steering::done:
        return TRUE;
    case Steering::too_late:
        return norvane::fail(E_ACCESSDENIED);
    case Steering::no_such_key:
        return norvane::fail(ERROR_NOT_FOUND);
    case Steering::bad_value:
        return norvane::fail(ERROR_INVALID_DATA);
    }
    return norvane::fail(E_UNEXPECTED);
}

} // namespace

BOOL NorvaneSetConfiguration(LPCSTR pszSection, LPCSTR pszKey, LPCSTR pszValue) noexcept {
    if (pszSection == nullptr || pszKey == nullptr || pszValue == nullptr) {
        return norvane::fail(E_INVALIDARG);
    }
    return norvane::guarded(
        [&] { return told(norvane::override_configuration(pszSection, pszKey, pszValue)); });
}

LPCSTR NorvaneGetConfiguration(LPCSTR pszSection, LPCSTR pszKey) noexcept {
    if (pszSection == nullptr || pszKey == nullptr) {
        return norvane::fail<LPCSTR>(E_INVALIDARG);
    }
    return norvane::guarded([&]() -> LPCSTR {
        const auto& texts = norvane::configuration().texts;
        const auto found = texts.find(norvane::configuration_text_name(pszSection, pszKey));
        return found == texts.end() ? norvane::fail<LPCSTR>(ERROR_NOT_FOUND)
                                    : found->second.c_str();
    });
}

BOOL NorvaneSetConfigurationFile(LPCSTR pszPath) noexcept {
    if (pszPath == nullptr || *pszPath == '\0') {
        return norvane::fail(E_INVALIDARG);
    }
    return norvane::guarded([&] { return told(norvane::name_configuration_file(pszPath)); });
}

BOOL NorvaneEnumConfigurationProblems(NORVANE_CONFIGURATION_PROBLEM_CALLBACK pfnCallback,
                                      void* pvArg) noexcept {
    if (pfnCallback == nullptr) {
        return norvane::fail(E_INVALIDARG);
    }
    return norvane::guarded([&]() -> BOOL {
        for (const norvane::ConfigurationProblem& problem : norvane::configuration().problems) {
            if (!pfnCallback(problem.file.c_str(), problem.line, problem.text.c_str(), pvArg)) {
                break;
            }
        }
        return TRUE;
    });
}
