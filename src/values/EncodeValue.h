#pragma once

#include "asn1/ControlClass.h"
#include "values/ASN1Blob.h"
#include "values/Exceptions.h"

#include <cstdint>
#include <string_view>

namespace norvane {

/// The encoding of `value` in a blob of its own. A value that cannot be encoded throws
/// Asn1Exception with the runtime's text; `file` and `line` say where the encoding was asked for.
template <class T>
[[nodiscard]] CACMPT_BLOB encode_value(T& value, std::string_view file, std::uint32_t line) {
    ASN1BEREncodeBuffer buffer;
    const ASN1C<T> control(buffer, value);
    const int length = Asn1CtxtUnrefInDestructor<ASN1C<T>>(control).EncodeTo(buffer);
    if (length < 1) {
        throw Asn1Exception(rtErrGetText(buffer.getCtxt()), file, line);
    }
    return {buffer.getMsgPtr(), static_cast<std::uint32_t>(length)};
}

/// Decodes `bytes` into `value`, which views them. Throws Asn1Exception with the runtime's text.
template <class T>
void decode_value(ByteView bytes, T& value, std::string_view file, std::uint32_t line) {
    ASN1BERDecodeBuffer buffer(bytes.data, bytes.length);
    ASN1C<T> control(buffer, value);
    if (control.DecodeFrom(buffer) < 0) {
        throw Asn1Exception(rtErrGetText(buffer.getCtxt()), file, line);
    }
}

} // namespace norvane
