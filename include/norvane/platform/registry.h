#pragma once

#include <norvane/platform/linkage.h>
#include <norvane/platform/types.h>

/// The registry, which on Linux is section [registry] of the configuration, read only; the limits
/// of section [limits] are values of it too, of 64 bits. A key is there if a value is named below
/// it. Names compare without regard to the case of ASCII letters.
///
/// These functions answer an error code and leave the last error alone.

/// An open key, or one of the two roots.
typedef struct HKEY__* HKEY; // NOLINT(bugprone-reserved-identifier): the platform's name
typedef HKEY* PHKEY;
/// An error code; `ERROR_SUCCESS` is success.
typedef LONG LSTATUS;
/// The rights that a key is opened with.
typedef DWORD REGSAM;

// A root has the number of 32 bits, extended by its sign to the size of a handle.
#ifdef __cplusplus
#define NORVANE_REGISTRY_ROOT(number)                                                              \
    (reinterpret_cast<HKEY>(static_cast<intptr_t>(static_cast<LONG>(number))))
#else
#define NORVANE_REGISTRY_ROOT(number) ((HKEY)(intptr_t)(LONG)(number))
#endif
#define HKEY_CURRENT_USER NORVANE_REGISTRY_ROOT(0x80000001U)
#define HKEY_LOCAL_MACHINE NORVANE_REGISTRY_ROOT(0x80000002U)

#define KEY_QUERY_VALUE 0x00000001U
#define KEY_READ 0x00020019U
/// The views of 64-bit and 32-bit programs; here there is one view for both.
#define KEY_WOW64_64KEY 0x00000100U
#define KEY_WOW64_32KEY 0x00000200U

/// Types of values.
#define REG_SZ 1U
#define REG_DWORD 4U
#define REG_QWORD 11U

NORVANE_PLATFORM_BEGIN

/// Opens a key.
///
/// @param hKey an open key or a root.
/// @param lpSubKey path below it, names separated by backslashes. Null or empty opens the same key
///     once more.
/// @param ulOptions 0.
/// @param samDesired rights for reading, and one of the views or none. Without `KEY_QUERY_VALUE`
///     values cannot be read.
/// @param phkResult receives the handle, to be closed with `RegCloseKey`; untouched on failure.
/// @return `ERROR_INVALID_PARAMETER` (null, an option, both views), `ERROR_INVALID_HANDLE`,
///     `ERROR_FILE_NOT_FOUND` (no such key), `ERROR_ACCESS_DENIED` (a right beyond reading) or
///     `ERROR_OUTOFMEMORY`.
LSTATUS RegOpenKeyExW(HKEY hKey, LPCWSTR lpSubKey, DWORD ulOptions, REGSAM samDesired,
                      PHKEY phkResult) NORVANE_PLATFORM_API(RegOpenKeyExW);

/// Reads a value. A REG_DWORD has 4 bytes, least significant first; a REG_SZ is wide text with its
/// terminator.
///
/// @param hKey an open key or a root.
/// @param lpValueName the value's name. Null or empty means a key's unnamed value, and no key has
///     one.
/// @param lpReserved null.
/// @param lpType receives the type, also with `ERROR_MORE_DATA`; may be null.
/// @param lpData receives the value; null only asks for its type and size. Untouched on failure.
/// @param lpcbData in: the size of `lpData` in bytes, not read if that is null. Out: the size of
///     the value, on success and with `ERROR_MORE_DATA`. May be null if `lpData` is.
/// @return `ERROR_INVALID_PARAMETER`, `ERROR_INVALID_HANDLE`, `ERROR_ACCESS_DENIED` (the key was
///     opened without the right), `ERROR_FILE_NOT_FOUND` (no such value), `ERROR_MORE_DATA`
///     (`lpData` is too small) or `ERROR_OUTOFMEMORY`.
LSTATUS RegQueryValueExW(HKEY hKey, LPCWSTR lpValueName, LPDWORD lpReserved, LPDWORD lpType,
                         LPBYTE lpData, LPDWORD lpcbData) NORVANE_PLATFORM_API(RegQueryValueExW);

/// Closes a key. Handles are never given out twice, so a second close is told. A root stays open.
///
/// @return `ERROR_INVALID_HANDLE` for what is no open key.
LSTATUS RegCloseKey(HKEY hKey) NORVANE_PLATFORM_API(RegCloseKey);

NORVANE_PLATFORM_END
