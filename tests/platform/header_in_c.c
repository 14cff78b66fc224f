#include <norvane/wincrypt.h>

#include "header_in_c.h"

int decode_enumerated_in_c(const BYTE* encoded, DWORD length) {
    int value = -1;
    DWORD size = sizeof value;
    if (!CryptDecodeObject(X509_ASN_ENCODING | PKCS_7_ASN_ENCODING, X509_ENUMERATED, encoded,
                           length, 0, &value, &size)) {
        return -1;
    }
    return value;
}

LPCWSTR wide_literal_in_c(void) { return NORVANE_W("R\u00F6\U0001F600t"); }
