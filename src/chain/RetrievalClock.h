#pragma once

#include "values/Date.h"

namespace norvane {

/// The system's clock in UTC, in whole microseconds: what time-outs are counted with.
[[nodiscard]] CACMPT_Date retrieval_clock();

/// What has passed since `start`. Throws CAException "time value is negative" if the clock was set
/// back.
[[nodiscard]] CACMPT_Date time_since(const CACMPT_Date& start);

/// A length of time for the platform. Throws CAException "time value is too big" from 0x7FFFFFFF
/// milliseconds up.
[[nodiscard]] DWORD whole_milliseconds(const CACMPT_Date& length);

} // namespace norvane
