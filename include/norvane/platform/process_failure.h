#pragma once

#include <norvane/platform/linkage.h>
#include <norvane/platform/types.h>

/// How the process failed where the answer to a question can only be that no check was possible: a
/// want of memory or descriptors, a file that cannot be read, a library that failed, a quota that
/// is spent. Revocation modules tell it, and programs that want to tell it from a fault of the
/// material ask for it.

NORVANE_PLATFORM_BEGIN

/// Notes how the calling thread's last question about a certificate failed. For revocation modules,
/// at the end of the outermost question.
///
/// @param dwError the error code; `ERROR_SUCCESS` if the process did not fail.
void NorvaneReportProcessFailure(DWORD dwError) NORVANE_PLATFORM_API(NorvaneReportProcessFailure);

/// Takes what was noted, so that it is asked for once: `ERROR_SUCCESS` if the process did not fail
/// in the calling thread's last question. `ERROR_NOT_ENOUGH_QUOTA` stands for a limit of section
/// [limits] of the configuration, and for a thread's stack.
DWORD NorvaneTakeProcessFailure(void) NORVANE_PLATFORM_API(NorvaneTakeProcessFailure);

NORVANE_PLATFORM_END
