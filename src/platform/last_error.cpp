#include <norvane/wincrypt.h>

namespace {

constinit thread_local DWORD last_error = ERROR_SUCCESS;

} // namespace

DWORD GetLastError() noexcept { return last_error; }

void SetLastError(DWORD dwErrCode) noexcept { last_error = dwErrCode; }
