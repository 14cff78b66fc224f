// Decodes the input as a certificate and as a CRL, with our runtime and with libcrypto. Where both
// accept it, they must have read the same.

#include "asn1/AgainstLibcrypto.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const norvane::ByteView input{data, static_cast<std::uint32_t>(size)};
    static_cast<void>(norvane::testing::both_accept_certificate(input));
    static_cast<void>(norvane::testing::both_accept_list(input));
    return 0;
}
