#pragma once

#include <norvane/platform/linkage.h>
#include <norvane/platform/types.h>

/// 100-nanosecond ticks since 1601-01-01 00:00:00, as two halves. The type requires the alignment
/// of its halves only, so it is not to be read as one 64-bit number through a cast.
typedef struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
} FILETIME, *PFILETIME, *LPFILETIME;

/// A date of the Gregorian calendar with a time of day. Months and days count from 1; `wDayOfWeek`
/// counts from 0, Sunday.
typedef struct SYSTEMTIME {
    WORD wYear;
    WORD wMonth;
    WORD wDayOfWeek;
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
} SYSTEMTIME, *PSYSTEMTIME, *LPSYSTEMTIME;

static_assert(sizeof(FILETIME) == 8 && offsetof(FILETIME, dwHighDateTime) == 4, "FILETIME");
static_assert(sizeof(SYSTEMTIME) == 16 && offsetof(SYSTEMTIME, wDayOfWeek) == 4 &&
                  offsetof(SYSTEMTIME, wMilliseconds) == 14,
              "SYSTEMTIME");

NORVANE_PLATFORM_BEGIN

/// The present moment in UTC, to the millisecond.
void GetSystemTime(SYSTEMTIME* lpSystemTime) NORVANE_PLATFORM_API(GetSystemTime);

/// Milliseconds since some moment before the process began. They are never set back.
ULONGLONG GetTickCount64(void) NORVANE_PLATFORM_API(GetTickCount64);

/// The clocks that a reading may be of: GetSystemTime, in milliseconds since 1601, and
/// GetTickCount64.
#define NORVANE_CLOCK_SYSTEM 0
#define NORVANE_CLOCK_TICKS 1

/// Is shown a reading of a clock, and gives the one that is to be told in its place, which may be
/// the same; the system's clock must stay before the year 30828. It throws nothing.
///
/// @param dwClock `NORVANE_CLOCK_...`
/// @param ullReading milliseconds.
typedef ULONGLONG(WINAPI* PFN_NORVANE_CLOCK)(DWORD dwClock, ULONGLONG ullReading, void* pvContext);

/// Sets who is shown what the calling thread reads from these two clocks, or nobody (null). For a
/// program that notes what a decision depended on, or has it depend on what was noted.
void NorvaneSetClock(PFN_NORVANE_CLOCK pfnClock, void* pvContext)
    NORVANE_PLATFORM_API(NorvaneSetClock);

/// Turns calendar fields into ticks; no time zone is applied.
///
/// @param lpSystemTime a year from 1601 to 30827, and fields that make a real date and time (no
///     leap seconds). `wDayOfWeek` is ignored.
/// @param lpFileTime receives the ticks; untouched on failure.
/// @return FALSE with the last error `ERROR_INVALID_PARAMETER` if a field is out of its range.
BOOL SystemTimeToFileTime(const SYSTEMTIME* lpSystemTime, FILETIME* lpFileTime)
    NORVANE_PLATFORM_API(SystemTimeToFileTime);

/// Breaks ticks into calendar fields, `wDayOfWeek` included; no time zone is applied, and what is
/// below a millisecond is dropped.
///
/// @param lpFileTime any value below 2^63, which is in the year 30828.
/// @param lpSystemTime receives the fields; untouched on failure.
/// @return FALSE with the last error `ERROR_INVALID_PARAMETER` for a value of 2^63 or above.
BOOL FileTimeToSystemTime(const FILETIME* lpFileTime, SYSTEMTIME* lpSystemTime)
    NORVANE_PLATFORM_API(FileTimeToSystemTime);

/// Shifts UTC ticks into local time by the zone offset that is in force now, at the moment of the
/// call, whatever the offset at the converted moment. So the result for a date of the other half
/// of the year differs by an hour from a local clock of that date.
///
/// The zone is the one of the C library (`TZ`, or else the system's setting) and is read anew at
/// each call; the environment must not be changed by another thread meanwhile.
///
/// @param lpFileTime ticks in UTC, below 2^63.
/// @param lpLocalFileTime receives the local ticks; untouched on failure. May be `lpFileTime`.
/// @return FALSE with the last error `ERROR_INVALID_PARAMETER` if the value or the result is
///     negative or 2^63 or above.
BOOL FileTimeToLocalFileTime(const FILETIME* lpFileTime, FILETIME* lpLocalFileTime)
    NORVANE_PLATFORM_API(FileTimeToLocalFileTime);

NORVANE_PLATFORM_END
