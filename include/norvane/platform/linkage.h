#pragma once

/// How a function of the platform layer is declared:
///
///     BOOL TlsFree(DWORD dwTlsIndex) NORVANE_PLATFORM_API(TlsFree);
///
/// The source sees the plain name. The linker sees `norvane_TlsFree`, since other libraries on
/// Linux may bring functions with the same plain names. The symbol is exported, and in C++ the
/// function is `noexcept`.
#ifdef __cplusplus
#define NORVANE_PLATFORM_NOEXCEPT noexcept
#else
#define NORVANE_PLATFORM_NOEXCEPT
#endif

#define NORVANE_PLATFORM_API(name)                                                                 \
    NORVANE_PLATFORM_NOEXCEPT __asm__("norvane_" #name) __attribute__((visibility("default")))

#ifdef __cplusplus
#define NORVANE_PLATFORM_BEGIN extern "C" {
#define NORVANE_PLATFORM_END }
#else
#define NORVANE_PLATFORM_BEGIN
#define NORVANE_PLATFORM_END
#endif

/// The calling convention of the platform's functions; Linux knows one only.
#define WINAPI
