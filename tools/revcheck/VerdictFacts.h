#pragma once

#include "Report.h"

#include <string>
#include <string_view>
#include <vector>

namespace norvane {

/// What a report tells of a verdict under a label.
struct Fact {
    std::string_view label;
    std::string text; ///< not yet printable
};

/// "GOOD", "REVOKED" or "NO CHECK".
[[nodiscard]] std::string_view word_of(Status status) noexcept;

/// A reason of RFC 5280 5.3.1 by its name, or by its number where it has none.
[[nodiscard]] std::string reason_text(DWORD code);

/// The certificate, and what the verdict about it rests on.
[[nodiscard]] std::vector<Fact> facts_of(const CheckedCertificate& certificate,
                                         const Verdict& verdict);

} // namespace norvane
