#pragma once

#include <assert.h>
#include <stddef.h>
#include <stdint.h>
#ifndef __cplusplus
#include <uchar.h>
#endif

/// The basic types with their widths on 64-bit Windows. Note that `LONG` and `DWORD` have 32 bits,
/// unlike `long` on Linux, and that `WCHAR` is a UTF-16 unit, unlike `wchar_t`.

typedef uint8_t BYTE;
typedef uint16_t WORD;
typedef uint32_t DWORD;
typedef int32_t LONG;
typedef uint32_t ULONG;
typedef int64_t LONGLONG;
typedef uint64_t ULONGLONG;
typedef int INT;
typedef unsigned int UINT;
typedef size_t SIZE_T;
typedef int BOOL;
typedef char CHAR;
typedef char16_t WCHAR;

typedef void* PVOID;
typedef void* LPVOID;
typedef const void* LPCVOID;
typedef BYTE* LPBYTE;
typedef DWORD* LPDWORD;
typedef CHAR* LPSTR;
typedef const CHAR* LPCSTR;
typedef WCHAR* LPWSTR;
typedef const WCHAR* LPCWSTR;

/// A block of memory from `LocalAlloc`; the handle is the address of the block.
typedef void* HLOCAL;

#ifndef FALSE
#define FALSE 0
#endif
#ifndef TRUE
#define TRUE 1
#endif

static_assert(sizeof(void*) == 8, "the layouts are those of the 64-bit platform");
static_assert(sizeof(BOOL) == 4 && sizeof(UINT) == 4, "32-bit integers");
static_assert(sizeof(WCHAR) == 2, "wide text is UTF-16");
