#include "call/FailureReport.h"

namespace norvane {

void report_process_error(std::uint32_t /*error*/) noexcept {}

} // namespace norvane
