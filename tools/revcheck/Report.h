#pragma once

#include "Checker.h"
#include "DecisionRecord.h"
#include "Reasons.h"

#include <string>
#include <vector>

namespace norvane {

/// A certificate that was checked, under the name of its input.
struct CheckedCertificate {
    std::string name;
    PCCERT_CONTEXT context = nullptr;
};

enum class Colour : std::uint8_t { plain, ansi };

/// How a verdict came about.
struct Account {
    const DecisionRecord* record = nullptr; ///< null: nobody listened
    std::vector<Reason> reasons{};          ///< why no check was possible; empty otherwise
    bool whole = false;                     ///< The whole record is to be shown.
};

/// The account of a verdict, not to be shown whole.
[[nodiscard]] Account account_of(const Verdict& verdict, const DecisionRecord* record);

/// The verdict for people, in lines.
[[nodiscard]] std::string report_for_people(const CheckedCertificate& certificate,
                                            const Verdict& verdict, const Account& account,
                                            Colour colour);

/// The verdict as a JSON object on one line (docs/revcheck.schema.json).
[[nodiscard]] std::string report_as_json(const CheckedCertificate& certificate,
                                         const Verdict& verdict, const Account& account);

} // namespace norvane
