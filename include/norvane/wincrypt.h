#pragma once

/// The platform's services under the platform's own names, for C11 and C++20.
///
/// On Windows this is the system's own pair of headers. On Linux the same names, constants and
/// 64-bit layouts are declared here and served by libnorvane_platform.so, so that one source
/// compiles for both systems.
///
/// What holds for every function on Linux:
///  - No exception leaves it. A failure is told by the result, and by `GetLastError`.
///  - It may be called from any thread at any time, unless its own text says otherwise. The last
///    error belongs to the calling thread.
///  - Pointers must not be null, and memory behind them must be as large as told, unless the
///    function's own text gives null a meaning.
///  - Its linker symbol bears a prefix (see platform/linkage.h), so the plain names do not meet
///    those of other libraries in one process.

#ifdef _WIN32

// CERT_REVOCATION_PARA with all of its fields; <windows.h> includes <wincrypt.h> itself.
#ifndef CERT_REVOCATION_PARA_HAS_EXTRA_FIELDS
#define CERT_REVOCATION_PARA_HAS_EXTRA_FIELDS
#endif
#include <windows.h>

#include <wincrypt.h>

#define NORVANE_WIDE_(text) L##text

#else

#include <norvane/platform/algorithm_ids.h>
#include <norvane/platform/certificates.h>
#include <norvane/platform/clock.h>
#include <norvane/platform/configuration.h>
#include <norvane/platform/decision_record.h>
#include <norvane/platform/encoding.h>
#include <norvane/platform/error_codes.h>
#include <norvane/platform/key_identifier.h>
#include <norvane/platform/last_error.h>
#include <norvane/platform/local_memory.h>
#include <norvane/platform/modules.h>
#include <norvane/platform/oid_info.h>
#include <norvane/platform/process_failure.h>
#include <norvane/platform/providers.h>
#include <norvane/platform/registry.h>
#include <norvane/platform/retrieval.h>
#include <norvane/platform/revocation.h>
#include <norvane/platform/stores.h>
#include <norvane/platform/text.h>
#include <norvane/platform/thread_storage.h>
#include <norvane/platform/types.h>

#define NORVANE_WIDE_(text) u##text

#endif

/// A literal of `WCHAR` units: NORVANE_W("Root") is L"Root" on Windows and u"Root" on Linux. The
/// text may be a macro that expands to a string literal.
#define NORVANE_W(text) NORVANE_WIDE_(text)
