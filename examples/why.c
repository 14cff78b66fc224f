/* Asks for the verdict about one certificate, and prints how it came about:
 *
 *     why /path/to/Root /path/to/CA certificate.der
 *
 * Build it with: cc why.c $(pkg-config --cflags --libs norvane-platform)
 */
#include <norvane/wincrypt.h>

#include <stdio.h>
#include <stdlib.h>

enum { largest_certificate = 65536, columns_of_a_level = 2 };

/* Prints an event on a line, indented by the branches around it. What it says comes from
 * certificates and servers too: whoever shows it on a terminal makes it printable first. */
static void print_event(const NORVANE_RECORD_EVENT* event, void* context) {
    int* const depth = context;
    if (event->dwKind == NORVANE_RECORD_END) {
        --*depth;
    }
    printf("%*s%s%s", *depth * columns_of_a_level, "",
           event->dwKind == NORVANE_RECORD_END ? "-> " : "", event->pszCode);
    for (DWORD i = 0; i < event->cValue; ++i) {
        printf(" %s=%s", event->rgValue[i].pszName, event->rgValue[i].pszText);
    }
    printf("\n");
    if (event->dwKind == NORVANE_RECORD_BEGIN) {
        ++*depth;
    }
}

/* The certificate in the file; null if there is none. The caller frees it. */
static PCCERT_CONTEXT read_certificate(const char* path) {
    static BYTE bytes[largest_certificate];
    FILE* const file = fopen(path, "rb");
    if (file == NULL) {
        return NULL;
    }
    const size_t count = fread(bytes, 1, sizeof bytes, file);
    (void)fclose(file);
    return CertCreateCertificateContext(X509_ASN_ENCODING, bytes, (DWORD)count);
}

int main(int argc, char** argv) {
    if (argc != 4 || !NorvaneSetConfiguration("stores", "Root", argv[1]) ||
        !NorvaneSetConfiguration("stores", "CA", argv[2])) {
        (void)fprintf(stderr, "usage: why ROOT CA CERTIFICATE, with absolute paths\n");
        return EXIT_FAILURE;
    }
    const PCCERT_CONTEXT certificate = read_certificate(argv[3]);
    if (certificate == NULL) {
        (void)fprintf(stderr, "%s: no certificate in DER (0x%08x)\n", argv[3], GetLastError());
        return EXIT_FAILURE;
    }

    void* certificates[] = {(void*)certificate};
    CERT_REVOCATION_STATUS status = {.cbSize = sizeof status};
    int depth = 0;
    NorvaneSetRecordListener(print_event, &depth);
    (void)CertVerifyRevocation(X509_ASN_ENCODING, CERT_CONTEXT_REVOCATION_TYPE, 1, certificates,
                               CERT_VERIFY_CACHE_ONLY_BASED_REVOCATION, NULL, &status);
    NorvaneSetRecordListener(NULL, NULL);
    CertFreeCertificateContext(certificate);
    return EXIT_SUCCESS;
}
