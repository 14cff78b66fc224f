#pragma once

#include <norvane/wincrypt.h>

#ifdef __cplusplus
extern "C" {
#endif

/// An ENUMERATED decoded by code that is compiled as C; -1 on failure.
int decode_enumerated_in_c(const BYTE* encoded, DWORD length);

/// A literal with characters outside ASCII and outside the basic plane, compiled as C.
LPCWSTR wide_literal_in_c(void);

#ifdef __cplusplus
}
#endif
