#pragma once

#include "CrlAttempts.h"
#include "DecisionRecord.h"
#include "HtmlWriter.h"

#include <span>
#include <string>

namespace norvane {

/// A CRL under the name that the page has for it.
struct NamedCrl {
    std::size_t index = 0; ///< among the objects of the record
    std::string title{};
    std::string number{}; ///< that it bears, in words
    bool is_delta = false;
};

/// A table of CRLs against distribution points: what each CRL contributed at each of them or, where
/// it did not, what closed it. A delta CRL counts with its base CRL and has no row of its own. Of
/// several attempts the one that came farthest counts.
void draw_coverage(HtmlWriter& out, const DecisionRecord& record,
                   std::span<const CrlAttempt> attempts, std::span<const NamedCrl> crls);

} // namespace norvane
