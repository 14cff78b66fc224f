/* Asks for the verdict about one certificate, with a folder each for the stores Root and CA:
 *
 *     verdict /path/to/Root /path/to/CA certificate.der
 *
 * Build it with: cc verdict.c $(pkg-config --cflags --libs norvane-platform)
 */
#include <norvane/wincrypt.h>

#include <stdio.h>
#include <stdlib.h>

enum { largest_certificate = 65536 };

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
        (void)fprintf(stderr, "usage: verdict ROOT CA CERTIFICATE, with absolute paths\n");
        return EXIT_FAILURE;
    }
    const PCCERT_CONTEXT certificate = read_certificate(argv[3]);
    if (certificate == NULL) {
        (void)fprintf(stderr, "%s: no certificate in DER (0x%08x)\n", argv[3], GetLastError());
        return EXIT_FAILURE;
    }

    void* certificates[] = {(void*)certificate};
    CERT_REVOCATION_CRL_INFO crls = {.cbSize = sizeof crls};
    CERT_REVOCATION_PARA parameters = {
        .cbSize = sizeof parameters, .dwUrlRetrievalTimeout = 5000, .pCrlInfo = &crls};
    CERT_REVOCATION_STATUS status = {.cbSize = sizeof status};
    if (CertVerifyRevocation(X509_ASN_ENCODING, CERT_CONTEXT_REVOCATION_TYPE, 1, certificates,
                             CERT_VERIFY_CACHE_ONLY_BASED_REVOCATION, &parameters, &status)) {
        printf("good\n");
    } else if (status.dwError == CRYPT_E_REVOKED) {
        printf("revoked, reason %u\n", status.dwReason);
    } else {
        printf("no check was possible (0x%08x)\n", status.dwError);
    }
    /* The CRLs that the verdict rests on are the caller's now. */
    CertFreeCRLContext(crls.pBaseCrlContext);
    CertFreeCRLContext(crls.pDeltaCrlContext);
    CertFreeCertificateContext(certificate);
    return EXIT_SUCCESS;
}
