#pragma once

#include <norvane/wincrypt.h>

#include <string>
#include <utility>

namespace norvane {

/// Walks what the platform knows about the object identifiers of one group.
class COidInfoEnum {
  public:
    /// False ends the walk. Must not throw, since it is called by the platform.
    virtual bool on_oid_info(const CRYPT_OID_INFO& info) noexcept = 0;
    virtual ~COidInfoEnum() = default;

    /// Throws PlatformFailure.
    void walk(DWORD group);
};

/// Looks for an algorithm of public keys by its identifier and its class. The same identifier may
/// stand in the group several times: RSA keys have an entry for key exchange and one for
/// signatures.
class CFindPubKeyAlgId final : public COidInfoEnum {
  public:
    CFindPubKeyAlgId(std::string sought_oid, DWORD sought_class)
        : oid(std::move(sought_oid)), class_mask(sought_class) {}
    bool on_oid_info(const CRYPT_OID_INFO& info) noexcept override;

    std::string oid;
    DWORD found_algid = 0;
    DWORD class_mask; ///< the class bits that the number must have
    const CRYPT_OID_INFO* found_info = nullptr;
};

/// The platform's number of an algorithm, given as dotted text; 0 if it knows none. Throws
/// PlatformFailure.
[[nodiscard]] ALG_ID algorithm_number(const char* oid);

/// The information on the signature algorithm that combines the algorithm of a public key with a
/// hash, both given as dotted text. Null if there is none. It belongs to the platform's table.
/// Throws PlatformFailure.
[[nodiscard]] const CRYPT_OID_INFO* find_signature_oid_info(const char* key_oid,
                                                            const char* hash_oid);

} // namespace norvane
