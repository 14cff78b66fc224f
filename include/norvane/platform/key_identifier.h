#pragma once

#include <norvane/platform/certificates.h>

/// GeneralName (RFC 5280 4.2.1.6). The choice is the number of the tag plus one; the numbers 4 and
/// 6 have no value beside it.
#define CERT_ALT_NAME_OTHER_NAME 1U
#define CERT_ALT_NAME_RFC822_NAME 2U
#define CERT_ALT_NAME_DNS_NAME 3U
#define CERT_ALT_NAME_X400_ADDRESS 4U
#define CERT_ALT_NAME_DIRECTORY_NAME 5U
#define CERT_ALT_NAME_EDI_PARTY_NAME 6U
#define CERT_ALT_NAME_URL 7U
#define CERT_ALT_NAME_IP_ADDRESS 8U
#define CERT_ALT_NAME_REGISTERED_ID 9U

typedef struct CERT_OTHER_NAME {
    LPSTR pszObjId;
    CRYPT_OBJID_BLOB Value;
} CERT_OTHER_NAME, *PCERT_OTHER_NAME;

typedef struct CERT_ALT_NAME_ENTRY {
    DWORD dwAltNameChoice;
    union {
        PCERT_OTHER_NAME pOtherName;
        LPWSTR pwszRfc822Name;
        LPWSTR pwszDNSName;
        CERT_NAME_BLOB DirectoryName;
        LPWSTR pwszURL;
        CRYPT_DATA_BLOB IPAddress;
        LPSTR pszRegisteredID;
    };
} CERT_ALT_NAME_ENTRY, *PCERT_ALT_NAME_ENTRY;

typedef struct CERT_ALT_NAME_INFO {
    DWORD cAltEntry;
    PCERT_ALT_NAME_ENTRY rgAltEntry;
} CERT_ALT_NAME_INFO, *PCERT_ALT_NAME_INFO;

/// What `CryptDecodeObject` makes of an authority key identifier (RFC 5280 4.2.1.1). What is absent
/// is empty. The serial number stands least significant byte first.
#define szOID_AUTHORITY_KEY_IDENTIFIER2 "2.5.29.35"
#define X509_AUTHORITY_KEY_ID2 NORVANE_STRUCTURE_TYPE(31)
typedef struct CERT_AUTHORITY_KEY_ID2_INFO {
    CRYPT_DATA_BLOB KeyId;
    CERT_ALT_NAME_INFO AuthorityCertIssuer;
    CRYPT_INTEGER_BLOB AuthorityCertSerialNumber;
} CERT_AUTHORITY_KEY_ID2_INFO, *PCERT_AUTHORITY_KEY_ID2_INFO;

static_assert(sizeof(CERT_OTHER_NAME) == 24 && offsetof(CERT_OTHER_NAME, Value) == 8,
              "CERT_OTHER_NAME");
static_assert(sizeof(CERT_ALT_NAME_ENTRY) == 24 && offsetof(CERT_ALT_NAME_ENTRY, pwszURL) == 8,
              "CERT_ALT_NAME_ENTRY");
static_assert(sizeof(CERT_AUTHORITY_KEY_ID2_INFO) == 48 &&
                  offsetof(CERT_AUTHORITY_KEY_ID2_INFO, AuthorityCertIssuer) == 16 &&
                  offsetof(CERT_AUTHORITY_KEY_ID2_INFO, AuthorityCertSerialNumber) == 32,
              "CERT_AUTHORITY_KEY_ID2_INFO");
