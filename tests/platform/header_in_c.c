#include <norvane/wincrypt.h>

// Takes a function of the header, and a literal outside ASCII and outside the basic plane.
LPCWSTR wide_literal_in_c(void) {
    SetLastError(ERROR_TIMEOUT);
    return NORVANE_W("R\u00F6\U0001F600t");
}
