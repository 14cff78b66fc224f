#pragma once

#include "asn1/Decode.h"
#include "platform/crypto/Provider.h"

namespace norvane {

/// Has `decode_fields(Reader&)` read bytes that must be one element. Whether they are; if not, what
/// was read is of no use. What is read lives in `ctxt` and in the bytes.
template <class DecodeFields>
[[nodiscard]] bool read_der(ASN1CTXT& ctxt, Octets bytes, DecodeFields&& decode_fields) {
    if (bytes.size() > max_input_length) {
        return false;
    }
    return decode_with(ctxt, {bytes.data(), static_cast<std::uint32_t>(bytes.size())},
                       DecodeReport::silent, decode_fields) == code(ASN1Status::ok);
}

} // namespace norvane
