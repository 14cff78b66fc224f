#pragma once

#include "platform/store/ContextCell.h"
#include "platform/store/FieldBlock.h"
#include "platform/store/SharedObject.h"

#include <memory>
#include <optional>
#include <variant>

namespace norvane {

/// A certificate with the fields that contexts show.
class SharedCertificate : public SharedObject<SharedCertificate> {
  public:
    using Context = CERT_CONTEXT;

    /// Decodes the bytes. Throws std::bad_alloc.
    [[nodiscard]] static std::variant<Ref<SharedCertificate>, ObjectFault> make(EncodedBytes bytes,
                                                                                std::uint64_t hash);

    /// The context outside of stores, after which those of stores are made.
    [[nodiscard]] ContextCell<SharedCertificate>& cell() noexcept { return cell_; }

    /// Of the extension (RFC 5280 4.2.1.2); nothing if it is absent or its content is malformed.
    [[nodiscard]] std::optional<ByteView> subject_key_identifier() const noexcept {
        return subject_key_identifier_;
    }

  private:
    friend class SharedObject<SharedCertificate>;

    using SharedObject::SharedObject;
    ~SharedCertificate() = default;

    [[nodiscard]] bool lay_out(const ASN1T_TBSCertificate& tbs);
    [[nodiscard]] bool shows_only_own_bytes() const;

    ContextCell<SharedCertificate> cell_;
    CERT_INFO info_{};
    std::optional<ByteView> subject_key_identifier_;
    FieldBlock fields_;
    /// The memory of the decoder, if fields lie there and not in the bytes.
    std::unique_ptr<ASN1CTXT> ctxt_;
};

using CertificateCell = ContextCell<SharedCertificate>;

} // namespace norvane
