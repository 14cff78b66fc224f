#pragma once

#include "Checker.h"

#include <string>
#include <vector>

namespace norvane {

/// A certificate that was checked, under the name of its input.
struct CheckedCertificate {
    std::string name;
    PCCERT_CONTEXT context = nullptr;
};

enum class Colour : std::uint8_t { plain, ansi };

/// The verdict for people, in lines. `reasons` is what is known about why no check was possible,
/// empty for any other verdict.
[[nodiscard]] std::string report_for_people(const CheckedCertificate& certificate,
                                            const Verdict& verdict,
                                            const std::vector<std::string>& reasons, Colour colour);

/// The verdict as a JSON object on one line (docs/revcheck.schema.json).
[[nodiscard]] std::string report_as_json(const CheckedCertificate& certificate,
                                         const Verdict& verdict);

} // namespace norvane
