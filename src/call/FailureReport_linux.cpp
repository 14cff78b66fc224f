#include "call/FailureReport.h"

#include <norvane/platform/process_failure.h>

namespace norvane {

void report_process_error(std::uint32_t error) noexcept { NorvaneReportProcessFailure(error); }

} // namespace norvane
