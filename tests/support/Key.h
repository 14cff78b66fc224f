// Key pairs that sign test material, made by libcrypto.
#pragma once

#include "support/Der.h"

#include <cstddef>
#include <memory>

#include <openssl/types.h>

namespace norvane::testing {

// One key pair. Copies share the pair, which never changes; every call may come from any thread.
// A failure of libcrypto throws std::runtime_error.
class Key {
  public:
    // The RSA pair of 2048 bits, or the pair on P-256, with this index. Generated at the first call
    // for the index and kept until the process ends; a new process has other pairs.
    [[nodiscard]] static const Key& rsa(std::size_t index);
    [[nodiscard]] static const Key& ec(std::size_t index);

    // SubjectPublicKeyInfo.
    [[nodiscard]] Bytes spki() const;
    // AlgorithmIdentifier of what sign() makes: sha256WithRSAEncryption or ecdsa-with-SHA256.
    [[nodiscard]] const Bytes& signature_algorithm() const { return signature_algorithm_; }
    // The octets of the signature's BIT STRING.
    [[nodiscard]] Bytes sign(const Bytes& message) const;
    // The signed structure around a tbs: SEQUENCE { tbs, signature_algorithm(), BIT STRING }.
    [[nodiscard]] Bytes sign_element(const Bytes& tbs) const;

  private:
    Key(EVP_PKEY* pair, Bytes signature_algorithm);

    std::shared_ptr<EVP_PKEY> pair_;
    Bytes signature_algorithm_;
};

} // namespace norvane::testing
