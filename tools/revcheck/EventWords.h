#pragma once

#include "DecisionRecord.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace norvane {

/// What an event means to people, by its code.
struct EventWords {
    std::string_view code;
    /// How far a decision had come that failed at this: of two failures the one with the larger
    /// number was nearer to a verdict. 0 for what is no failure.
    std::uint16_t distance;
    /// A phrase in which "{x}" stands for the object of role x or the value x.
    std::string_view phrase;
    /// What to do about a failure; empty where the phrase says it all.
    std::string_view advice;
};

/// The words for a code. A code that this program does not know stands for itself.
[[nodiscard]] EventWords words_of(std::string_view code);

/// The phrase for an event, with its objects and values in it; not yet printable.
[[nodiscard]] std::string phrase_of(const RecordedEvent& event, const DecisionRecord& record);

} // namespace norvane
