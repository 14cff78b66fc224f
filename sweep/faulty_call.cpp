// One call of the export in this process with a fault, and one behind it without, all of it twice:
//     faulty_call KIND NUMBER cold|warm ROOT CA CERTIFICATE
// The certificate is revoked at the time that is asked for. "warm": a call without a fault goes
// before. With number 0 nothing fails. Standard output receives how many calls were counted.
#include "sweep/Faults.h"

#include <norvane/wincrypt.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

namespace {

constexpr int settling_calls = 8;

// As revcheck; what goes beyond it is a fault that only this program sees.
enum Ending { good = 0, revoked = 1, no_check = 2, usage = 64, wrong_later = 90, leak = 91 };

Ending ask(PCCERT_CONTEXT certificate) {
    void* certificates[] = {const_cast<CERT_CONTEXT*>(certificate)};
    FILETIME time{};
    const SYSTEMTIME date{2026, 6, 1, 1, 0, 0, 0, 0};
    static_cast<void>(SystemTimeToFileTime(&date, &time));
    CERT_REVOCATION_CRL_INFO crls{};
    crls.cbSize = sizeof crls;
    CERT_REVOCATION_PARA parameters{};
    parameters.cbSize = sizeof parameters;
    parameters.pftTimeToUse = &time;
    parameters.pCrlInfo = &crls;
    CERT_REVOCATION_STATUS status{};
    status.cbSize = sizeof status;
    const BOOL is_good =
        CertVerifyRevocation(X509_ASN_ENCODING, CERT_CONTEXT_REVOCATION_TYPE, 1, certificates,
                             CERT_VERIFY_CACHE_ONLY_BASED_REVOCATION, &parameters, &status);
    CertFreeCRLContext(crls.pBaseCrlContext);
    CertFreeCRLContext(crls.pDeltaCrlContext);
    if (is_good != FALSE) {
        return good;
    }
    return status.dwError == CRYPT_E_REVOKED ? revoked : no_check;
}

// The answer with a fault. Ends the program if the answer behind it, without one, is not right.
Ending ask_with_fault(PCCERT_CONTEXT certificate, norvane::testing::FaultKind kind, long number,
                      long& count) {
    arm_fault(kind, number);
    const Ending ending = ask(certificate);
    count = disarm_fault();
    if (ask(certificate) != revoked) {
        std::fputs("the next call does not answer \"revoked\"\n", stderr);
        std::exit(wrong_later);
    }
    return ending;
}

} // namespace

int main(int argc, char** argv) {
    using norvane::testing::FaultKind;
    if (argc != 7 || NorvaneSetConfiguration("stores", "Root", argv[4]) == FALSE ||
        NorvaneSetConfiguration("stores", "CA", argv[5]) == FALSE) {
        return usage;
    }
    const FaultKind kind =
        std::strcmp(argv[1], "descriptor") == 0 ? FaultKind::descriptor : FaultKind::allocation;
    const long number = std::atol(argv[2]);
    const bool warm = std::strcmp(argv[3], "warm") == 0;
    std::ifstream file(argv[6], std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    const PCCERT_CONTEXT certificate =
        CertCreateCertificateContext(X509_ASN_ENCODING, reinterpret_cast<const BYTE*>(bytes.data()),
                                     static_cast<DWORD>(bytes.size()));
    if (certificate == nullptr || (warm && ask(certificate) != revoked)) {
        return usage;
    }
    long count = 0;
    const Ending ending = ask_with_fault(certificate, kind, number, count);
    std::printf("%ld\n", count);
    // What a failure leaves behind for good it leaves once, and the platform keeps some of what was
    // asked for a few times.
    for (int i = 0; i < settling_calls; ++i) {
        static_cast<void>(ask(certificate));
    }
    const long live = live_blocks();
    if (ask_with_fault(certificate, kind, number, count) == good) {
        return good;
    }
    if (live_blocks() > live) {
        std::fprintf(stderr, "%ld blocks live, then %ld\n", live, live_blocks());
        return leak;
    }
    return ending;
}
