#pragma once

#include "asn1/ControlClass.h"
#include "values/ASN1Blob.h"

#include <norvane/wincrypt.h>

namespace norvane {

/// The to-be-signed part of a certificate or CRL, bound to its control class, whichever that is. It
/// refers to the control class and lives no longer than that.
class SignedPart {
  public:
    template <class T>
    SignedPart(const ASN1C<T>& control) // Implicit, so that callers pass their control class.
        : control_(&control), encode_([](const void* bound, ASN1BEREncodeBuffer& buffer) {
              return static_cast<const ASN1C<T>*>(bound)->EncodeTo(buffer);
          }) {}

    /// Returns the length of the encoding, or a value below 1 on failure.
    [[nodiscard]] int EncodeTo(ASN1BEREncodeBuffer& buffer) const {
        return encode_(control_, buffer);
    }

  private:
    const void* control_;
    int (*encode_)(const void* control, ASN1BEREncodeBuffer& buffer);
};

/// Whether a signature over a to-be-signed part verifies with a key. The platform's providers hash
/// and verify, and its tables of algorithms say whether the algorithms of the signature and of the
/// key belong together.
///
/// False if the signature is not good, and also if the algorithms are unknown or do not belong
/// together: neither is an exception. Throws CryptException if the platform fails or no provider
/// supports the key (CRYPT_E_NOT_FOUND), PlatformFailure if the process is to blame, QuotaSpent,
/// CAtlException if the search for a provider fails,
/// Asn1Exception if the part cannot be encoded, and one of the family if an identifier has more
/// than 255 characters, or that of a supported key more than 128.
///
/// @param encode_buffer receives the encoding of `tbs`.
[[nodiscard]] bool verify_signature(ASN1BEREncodeBuffer& encode_buffer, const SignedPart& tbs,
                                    const ASN1TBitStr& signature,
                                    const ASN1T_SubjectPublicKeyInfo& spki,
                                    const ASN1T_AlgorithmIdentifier& signature_algorithm);

/// The same with a provider and a hash that are chosen already. Throws as above.
[[nodiscard]] bool verify_with_provider(ASN1BEREncodeBuffer& encode_buffer, const SignedPart& tbs,
                                        const ASN1TBitStr& signature,
                                        const ASN1T_SubjectPublicKeyInfo& spki, HCRYPTPROV provider,
                                        ALG_ID hash_algid);

/// The octets of a signature in reverse order, which is the order of the platform's providers.
/// Throws CAException "signature too long" if the count of bits has no count of octets.
void reverse_signature(CACMPT_BLOB& out, const ASN1TBitStr& signature);

} // namespace norvane
