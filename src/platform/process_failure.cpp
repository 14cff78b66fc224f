#include <norvane/wincrypt.h>

#include <utility>

namespace {

constinit thread_local DWORD noted = ERROR_SUCCESS;

} // namespace

void NorvaneReportProcessFailure(DWORD dwError) noexcept { noted = dwError; }

DWORD NorvaneTakeProcessFailure() noexcept { return std::exchange(noted, ERROR_SUCCESS); }
