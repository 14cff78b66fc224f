// The contents of files for tests.
#pragma once

#include "support/Der.h"

#include <memory>
#include <string>
#include <vector>

#include <openssl/pem.h>

namespace norvane::testing {

[[nodiscard]] inline std::string pem(const std::string& label, const Bytes& content) {
    const std::unique_ptr<BIO, decltype(&BIO_free)> out(BIO_new(BIO_s_mem()), BIO_free);
    PEM_write_bio(out.get(), label.c_str(), "", content.data(), static_cast<long>(content.size()));
    char* text = nullptr;
    const long length = BIO_get_mem_data(out.get(), &text);
    return {text, static_cast<std::size_t>(length)};
}

// A SignedData of PKCS #7 without signers: `parts` are its fields of certificates and CRLs.
[[nodiscard]] inline Bytes signed_data(const std::vector<Bytes>& parts) {
    return sequence(oid("1.2.840.113549.1.7.2"),
                    context(0, sequence(integer(1), set(), sequence(oid("1.2.840.113549.1.7.1")),
                                        cat(parts), set())));
}

} // namespace norvane::testing
