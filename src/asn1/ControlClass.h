#pragma once

#include "asn1/Certificate.h"
#include "asn1/CertificateList.h"
#include "asn1/Decode.h"
#include "asn1/ExtensionValues.h"
#include "asn1/GeneralName.h"
#include "asn1/MessageBuffer.h"
#include "asn1/Name.h"

#include <concepts>

namespace norvane {

/// A structure that keeps its encoding from when it was decoded.
template <class T>
concept KeepsEncoding = requires(const T& value) {
    { value.encoding } -> std::convertible_to<ByteView>;
};

/// Encodes `value`. Returns the length, at which getMsgPtr() of the buffer gives the octets, or a
/// negative status with the failure in the buffer's context.
template <KeepsEncoding T>
[[nodiscard]] int encode_to(ASN1BEREncodeBuffer& buffer, const T& value) {
    return buffer.setMessage(value.encoding);
}
[[nodiscard]] int encode_to(ASN1BEREncodeBuffer& buffer, const ASN1T_Name& value);
[[nodiscard]] int encode_to(ASN1BEREncodeBuffer& buffer, const ASN1T_GeneralNames& value);

template <class T>
void bind_context(T& value, const ASN1ContextPtr& context) {
    value.context = context;
}

/// Binds a value of an ASN.1 type to a message buffer. It owns neither.
///
/// Every structure has an alias of this one template; a structure of its own needs a `decode`
/// over a Reader, a member `context`, and a member `encoding` or an `encode_to`.
template <class T>
class ASN1C {
  public:
    ASN1C(ASN1MessageBuffer& buffer, T& value) : buffer_(buffer), value_(value) {}

    /// Encodes the value into `buffer`. Returns the length, or a value below 1 on failure.
    [[nodiscard]] int EncodeTo(ASN1BEREncodeBuffer& buffer) const {
        return encode_to(buffer, value_);
    }

    /// Fills the value from the bytes of `buffer`, which must be one element with nothing behind
    /// it. Returns 0, or a negative status with the value empty and the failure in the context of
    /// `buffer`. The value holds a reference on that context.
    [[nodiscard]] int DecodeFrom(ASN1BERDecodeBuffer& buffer) {
        const int status = decode_element(buffer.getCtxt(), buffer.getBuffer(), value_);
        if (status == code(ASN1Status::ok)) {
            bind_context(value_, buffer.getContext());
        }
        return status;
    }

    [[nodiscard]] ASN1MessageBuffer& buffer() const { return buffer_; }
    [[nodiscard]] const T& value() const { return value_; }

  protected:
    [[nodiscard]] T& bound_value() const { return value_; }

  private:
    ASN1MessageBuffer& buffer_;
    T& value_;
};

using ASN1C_Certificate = ASN1C<ASN1T_Certificate>;
using ASN1C_TBSCertificate = ASN1C<ASN1T_TBSCertificate>;
using ASN1C_CertificateList = ASN1C<ASN1T_CertificateList>;
using ASN1C_TBSCertList = ASN1C<ASN1T_TBSCertList>;
using ASN1C_Name = ASN1C<ASN1T_Name>;
using ASN1C_GeneralNames = ASN1C<ASN1T_GeneralNames>;
using ASN1C_DistributionPointName = ASN1C<ASN1T_DistributionPointName>;
using ASN1C_AuthorityInfoAccessSyntax = ASN1C<ASN1T_AuthorityInfoAccessSyntax>;

/// A control class that holds a reference on the context of its value and drops it when it goes,
/// so that the value's memory lives through an encoding and no longer.
template <class Control>
class Asn1CtxtUnrefInDestructor : public Control {
  public:
    explicit Asn1CtxtUnrefInDestructor(const Control& control)
        : Control(control), context_(control.value().context) {}

  private:
    ASN1ContextPtr context_;
};

} // namespace norvane
