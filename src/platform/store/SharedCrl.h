#pragma once

#include "asn1/CertificateList.h"
#include "platform/store/ContextCell.h"
#include "platform/store/FieldBlock.h"
#include "platform/store/SharedObject.h"

#include <map>
#include <memory>
#include <mutex>
#include <variant>

namespace norvane {

/// A CRL with the fields that contexts show. Its entries are laid out one by one as somebody finds
/// them, and stay.
class SharedCrl : public SharedObject<SharedCrl> {
  public:
    using Context = CRL_CONTEXT;

    /// Decodes the bytes. Throws std::bad_alloc.
    [[nodiscard]] static std::variant<Ref<SharedCrl>, ObjectFault> make(EncodedBytes bytes,
                                                                        std::uint64_t hash);

    /// The context outside of stores, after which those of stores are made.
    [[nodiscard]] ContextCell<SharedCrl>& cell() noexcept { return cell_; }

    /// The first entry with this serial number, least significant octet first; null if there is
    /// none. The entry lives as long as this object. Throws std::bad_alloc.
    [[nodiscard]] CRL_ENTRY* find_entry(const CRYPT_INTEGER_BLOB& serial);

  private:
    friend class SharedObject<SharedCrl>;

    using SharedObject::SharedObject;
    ~SharedCrl() = default;

    [[nodiscard]] bool lay_out(const ASN1T_TBSCertList& tbs);
    [[nodiscard]] CRL_ENTRY* entry_for(const ASN1T_RevokedCertificate& revoked);

    struct Entry {
        FieldBlock fields;
        CRL_ENTRY* entry = nullptr;
    };

    ContextCell<SharedCrl> cell_;
    CRL_INFO info_{};
    FieldBlock fields_;
    ASN1T_RevokedCertificates revoked_;
    std::map<const std::uint8_t*, Entry> entries_; ///< By where the serial number stands.
    ASN1CTXT ctxt_;
};

using CrlCell = ContextCell<SharedCrl>;

} // namespace norvane
