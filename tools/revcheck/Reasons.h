#pragma once

#include "DecisionRecord.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace norvane {

/// Something that stood in the way of a verdict.
struct Reason {
    const RecordedEvent* event = nullptr;
    const RecordedNode* retrieval = nullptr; ///< that ended with the event; null if none did
};

/// The place of the last question that the program itself asked; 0 if there is none.
[[nodiscard]] std::size_t last_question_of(const DecisionRecord& record);

/// Why the question of a record has ended without a check; the decisive reason first, what led to
/// it behind it. It is found in what the decision did last: its last pass, or where it had none
/// its search for the issuer. Of all that failed there that counts which had come farthest in the
/// order in which a decision goes (EventWords::distance), and of several the first. If that is a
/// question about a member of a path, the same is asked of that question. Retrievals that failed on
/// the way to it follow, two at most.
///
/// @param question the place of the question among the nodes of the record.
[[nodiscard]] std::vector<Reason> find_reasons(const DecisionRecord& record, std::size_t question);

/// Where something failed, and how near to a verdict (EventWords::distance).
struct FailurePlace {
    std::size_t place = 0; ///< among the nodes of the record
    std::uint16_t distance = 0;
};

/// What came farthest of all that failed at the nodes from `first` to `end`, and not in questions
/// among them; of several the first. Nothing if nothing failed.
[[nodiscard]] std::optional<FailurePlace> farthest_failure(const DecisionRecord& record,
                                                           std::size_t first, std::size_t end);

/// The reasons in at most six lines, the last one what to do; not yet printable.
[[nodiscard]] std::vector<std::string> reason_lines(const std::vector<Reason>& reasons,
                                                    const DecisionRecord& record);

} // namespace norvane
