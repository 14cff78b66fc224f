#pragma once

#include <norvane/platform/clock.h>
#include <norvane/platform/linkage.h>
#include <norvane/platform/types.h>

/// The identifier of a class, an interface or the like (RFC 4122), in the parts of its text.
struct GUID {
    DWORD Data1;
    WORD Data2;
    WORD Data3;
    BYTE Data4[8];

    [[nodiscard]] friend constexpr bool operator==(const GUID&, const GUID&) noexcept = default;
};

/// A result; negative ones are failures.
typedef LONG HRESULT;
#define SUCCEEDED(result) (static_cast<HRESULT>(result) >= 0)
#define FAILED(result) (static_cast<HRESULT>(result) < 0)

/// Days since 1899-12-30 00:00:00 of an unnamed zone, the time of day being the fraction. Before
/// that moment the fraction still counts forward: -1.25 is 1899-12-29 06:00:00. The years are 100
/// to 9999.
typedef double DATE;

typedef short VARIANT_BOOL;
#define VARIANT_TRUE (static_cast<VARIANT_BOOL>(-1))
#define VARIANT_FALSE (static_cast<VARIANT_BOOL>(0))

typedef WORD VARTYPE;
/// Types of what a VARIANT holds, as far as they are known here.
enum : VARTYPE {
    VT_EMPTY = 0,
    VT_NULL = 1,
    VT_I2 = 2,
    VT_I4 = 3,
    VT_R4 = 4,
    VT_R8 = 5,
    VT_DATE = 7,
    VT_DISPATCH = 9,
    VT_ERROR = 10,
    VT_BOOL = 11,
    VT_UNKNOWN = 13,
    VT_I1 = 16,
    VT_UI1 = 17,
    VT_UI2 = 18,
    VT_UI4 = 19,
    VT_I8 = 20,
    VT_UI8 = 21,
    VT_INT = 22,
    VT_UINT = 23,
    /// A flag: a pointer to a value of the type.
    VT_BYREF = 0x4000
};

struct IUnknown;
struct IDispatch;

/// A value of one of several types.
struct VARIANT {
    VARTYPE vt;
    WORD wReserved1;
    WORD wReserved2;
    WORD wReserved3;
    union {
        LONGLONG llVal;
        ULONGLONG ullVal;
        LONG lVal;
        DWORD ulVal;
        int16_t iVal;
        WORD uiVal;
        int8_t cVal;
        BYTE bVal;
        INT intVal;
        UINT uintVal;
        float fltVal;
        double dblVal;
        DATE date;
        VARIANT_BOOL boolVal;
        HRESULT scode;
        IUnknown* punkVal;
        IDispatch* pdispVal;
        void* byref;
        void* reserved[2]; ///< the size of the largest type that the platform has
    };
};

static_assert(sizeof(GUID) == 16 && alignof(GUID) == 4, "GUID");
static_assert(sizeof(VARIANT) == 24 && offsetof(VARIANT, ullVal) == 8, "VARIANT");

NORVANE_PLATFORM_BEGIN

/// Makes a VARIANT empty: releases the object that it holds, if any. What a `VT_BYREF` points to
/// stays the caller's.
///
/// @return `S_OK`, `E_INVALIDARG` for null, or `DISP_E_BADVARTYPE` for a type that is not known
///     here, with the VARIANT unchanged.
HRESULT VariantClear(VARIANT* pvarg) NORVANE_PLATFORM_API(VariantClear);

/// Turns calendar fields into a DATE. A day of 0, or one behind the end of its month up to 31,
/// counts on from the month; `wDayOfWeek` and `wMilliseconds` are ignored.
///
/// @param pvtime receives the DATE; untouched on failure.
/// @return FALSE if a field is out of its range; the last error is left alone.
INT SystemTimeToVariantTime(SYSTEMTIME* lpSystemTime, DATE* pvtime)
    NORVANE_PLATFORM_API(SystemTimeToVariantTime);

/// Breaks a DATE into calendar fields, rounded to whole seconds.
///
/// @param lpSystemTime receives the fields, `wDayOfWeek` included; untouched on failure.
/// @return FALSE for what is no DATE; the last error is left alone.
INT VariantTimeToSystemTime(DATE vtime, SYSTEMTIME* lpSystemTime)
    NORVANE_PLATFORM_API(VariantTimeToSystemTime);

NORVANE_PLATFORM_END
