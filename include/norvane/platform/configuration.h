#pragma once

#include <norvane/platform/linkage.h>
#include <norvane/platform/types.h>

/// How a program steers the configuration of its own process (docs/configuration.md tells the
/// files, sections and keys). The configuration is read once, when the first function wants
/// something of it; so these are for the beginning of a program, and refused afterwards.

NORVANE_PLATFORM_BEGIN

/// Lays a key down for this process, over what every file says about it. Of two calls for one key
/// the later one counts.
///
/// @param pszSection, pszKey a section and a key of the files.
/// @param pszValue the value as a file would give it, in UTF-8. Paths are absolute.
/// @return FALSE with the last error `E_INVALIDARG` (null), `ERROR_NOT_FOUND` (no such key),
///     `ERROR_INVALID_DATA` (the value is not of the key's kind), `E_ACCESSDENIED` (the
///     configuration has been read already) or `ERROR_NOT_ENOUGH_MEMORY`.
BOOL NorvaneSetConfiguration(LPCSTR pszSection, LPCSTR pszKey, LPCSTR pszValue)
    NORVANE_PLATFORM_API(NorvaneSetConfiguration);

/// Tells what a key is in force with, as a file would give it: the default if no file has it.
///
/// @param pszSection, pszKey a section and a key of the files.
/// @return text that lives as long as the process; null with the last error `E_INVALIDARG` (null),
///     `ERROR_NOT_FOUND` (there is no such key, or it has no value), `ERROR_NOT_ENOUGH_MEMORY`,
///     `ERROR_TOO_MANY_OPEN_FILES` or `ERROR_READ_FAULT` (as NorvaneEnumConfigurationProblems).
LPCSTR NorvaneGetConfiguration(LPCSTR pszSection, LPCSTR pszKey)
    NORVANE_PLATFORM_API(NorvaneGetConfiguration);

/// Names a file that is read behind the machine's and the user's, in the place of the one that
/// NORVANE_CONFIG names. It is a problem of the configuration if there is no such file.
///
/// @return FALSE with the last error `E_INVALIDARG` (null or empty), `E_ACCESSDENIED` (the
///     configuration has been read already) or `ERROR_NOT_ENOUGH_MEMORY`.
BOOL NorvaneSetConfigurationFile(LPCSTR pszPath) NORVANE_PLATFORM_API(NorvaneSetConfigurationFile);

/// Takes something in the files that could not be followed and was passed over.
///
/// @param pszFile the path of the file.
/// @param dwLine the line, from 1; 0 for the file as a whole.
/// @param pszText what is wrong, in words, without control characters. Both texts live as long as
///     the process.
/// @param pvArg what the caller of `NorvaneEnumConfigurationProblems` gave.
/// @return FALSE to be told no more.
typedef BOOL (*NORVANE_CONFIGURATION_PROBLEM_CALLBACK)(LPCSTR pszFile, DWORD dwLine, LPCSTR pszText,
                                                       void* pvArg);

/// Reads the configuration, unless that is done, and tells its problems in the order of files and
/// lines.
///
/// @param pfnCallback called once for each, without a lock being held. It must not throw.
/// @return FALSE with the last error `E_INVALIDARG` (no function), `ERROR_NOT_ENOUGH_MEMORY`,
///     `ERROR_TOO_MANY_OPEN_FILES` or `ERROR_READ_FAULT` (a file could not be read now; the next
///     function that wants the configuration tries again).
BOOL NorvaneEnumConfigurationProblems(NORVANE_CONFIGURATION_PROBLEM_CALLBACK pfnCallback,
                                      void* pvArg)
    NORVANE_PLATFORM_API(NorvaneEnumConfigurationProblems);

NORVANE_PLATFORM_END
