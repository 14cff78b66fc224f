/* Turns the blob of a GOST R 34.10-94 public key into text and back, and shows what comes out.
 *
 *     libraries=/usr/lib/x86_64-linux-gnu
 *     cc public-key-to-text.c -L$libraries/norvane -l:norvane_revocation.so -lnorvane_platform \
 *         -Wl,-rpath,$libraries/norvane
 */
#include <norvane/revocation.h>

#include <stdio.h>
#include <string.h>

/* 1.2.643.2.2.20, GOST R 34.10-94, and its number in the blob. */
static char key_algorithm[] = "1.2.643.2.2.20";

/* The header of the blob, then the parameters 1.2.643.2.2.32.2 and 1.2.643.2.2.30.1; the key of 512
 * bits follows. The octets of the key stand for any. */
static const BYTE blob_start[] = {0x06,
                                  0x20,
                                  0x01,
                                  0x00,
                                  CALG_NORVANE_GOST_R3410_94 & 0xFF,
                                  CALG_NORVANE_GOST_R3410_94 >> 8,
                                  0,
                                  0,
                                  'M',
                                  'A',
                                  'G',
                                  '1',
                                  0x00,
                                  0x02,
                                  0x00,
                                  0x00,
                                  0x30,
                                  0x12,
                                  0x06,
                                  0x07,
                                  0x2A,
                                  0x85,
                                  0x03,
                                  0x02,
                                  0x02,
                                  0x20,
                                  0x02,
                                  0x06,
                                  0x07,
                                  0x2A,
                                  0x85,
                                  0x03,
                                  0x02,
                                  0x02,
                                  0x1E,
                                  0x01};
enum { key_size = 64, blob_size = sizeof blob_start + key_size };

static void fill_blob(BYTE* blob) {
    memcpy(blob, blob_start, sizeof blob_start);
    for (unsigned i = 0; i < key_size; ++i) {
        blob[sizeof blob_start + i] = (BYTE)(i * 37U + 11U);
    }
}

static int fail(const char* step) {
    fprintf(stderr, "public-key-to-text: %s: error 0x%08x\n", step, (unsigned)GetLastError());
    return 1;
}

/* Converts the texts back, and compares the blob with the one that there was. */
static int convert_back(CRYPT_BIT_BLOB key_text, CRYPT_OBJID_BLOB parameters_text,
                        const BYTE* expected) {
    CERT_PUBLIC_KEY_INFO info = {{key_algorithm, parameters_text}, key_text};
    BYTE* blob = NULL;
    DWORD size = 0;
    if (!NorvaneXERConvertPublicKeyInfo(X509_ASN_ENCODING, &info, 0, 0, &blob, &size)) {
        return fail("from text");
    }
    const int same = size == blob_size && memcmp(blob, expected, size) == 0;
    printf("back in a blob of %u bytes: %s\n", (unsigned)size, same ? "the same" : "ANOTHER");
    LocalFree(blob);
    return same ? 0 : 1;
}

int main(void) {
    BYTE blob[blob_size];
    CRYPT_BIT_BLOB key_text = {0, NULL, 0};
    CRYPT_OBJID_BLOB parameters_text = {0, NULL};
    int status = 0;

    fill_blob(blob);
    if (NorvaneXEREncodePublicKeyAndParameters(X509_ASN_ENCODING, key_algorithm, blob, sizeof blob,
                                               0, NULL, &key_text.pbData, &key_text.cbData,
                                               &parameters_text.pbData, &parameters_text.cbData)) {
        printf("%s\n", (const char*)key_text.pbData);
        printf("%.*s\n", (int)parameters_text.cbData, (const char*)parameters_text.pbData);
        status = convert_back(key_text, parameters_text, blob);
    } else {
        status = fail("to text");
    }
    /* The text of the parameters may be there after a failure, too; null does no harm. */
    LocalFree(key_text.pbData);
    LocalFree(parameters_text.pbData);
    return status;
}
