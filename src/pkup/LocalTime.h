#pragma once

#include <norvane/platform/variant.h>

#include <chrono>
#include <optional>

namespace norvane {

/// The moment of a DATE in local time, rounded to the second: the reverse of
/// FileTimeToLocalFileTime, whose offset is the one in force now. Nothing for what is no date, or
/// one before 1601.
[[nodiscard]] std::optional<std::chrono::sys_seconds> utc_of_local_date(DATE local);

} // namespace norvane
