#pragma once

#include "asn1/ASN1Context.h"
#include "asn1/ByteView.h"

#include <cstdint>
#include <vector>

namespace norvane {

enum class ObjectKind : std::uint8_t { certificate, crl };

/// An encoded object and what its place or its outline says that it is; it may yet not decode.
struct EncodedObject {
    ObjectKind kind{};
    ByteView bytes;
};

/// Reads one element, with nothing behind it: a certificate, a CRL, or a ContentInfo with
/// SignedData of PKCS #7 (RFC 2315 9.1) or CMS (RFC 5652 5.1), which holds any number of them. What
/// its signers have signed, if anything, is not read. BER is taken as well as DER.
///
/// Appends what it finds to `objects`, viewing `bytes` or memory of `ctxt`. Returns 0; or a
/// negative status with the failure in `ctxt`, and then appends nothing.
[[nodiscard]] int read_objects(ASN1CTXT& ctxt, ByteView bytes, std::vector<EncodedObject>& objects);

} // namespace norvane
