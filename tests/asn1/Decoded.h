// One decoding, with all that its result needs to stay alive.
#pragma once

#include "asn1/ControlClass.h"
#include "support/Der.h"

#include <string>

namespace norvane::testing {

[[nodiscard]] inline ByteView view(const Bytes& bytes) {
    return {bytes.data(), static_cast<std::uint32_t>(bytes.size())};
}
[[nodiscard]] inline Bytes bytes_of(ByteView octets) { return {octets.begin(), octets.end()}; }

template <class T>
struct Decoded {
    // The bytes are copied to a block of exactly their size, in which a sanitizer sees a read past
    // the end.
    explicit Decoded(const Bytes& bytes)
        : input(bytes), buffer(view(input).data, view(input).length),
          status(ASN1C<T>(buffer, value).DecodeFrom(buffer)) {}
    Decoded(const Decoded&) = delete;
    Decoded& operator=(const Decoded&) = delete;

    [[nodiscard]] std::string error() { return rtErrGetText(buffer.getCtxt()); }
    [[nodiscard]] Bytes encode() {
        ASN1BEREncodeBuffer out;
        const int length = ASN1C<T>(out, value).EncodeTo(out);
        return length < 1 ? Bytes{}
                          : bytes_of({out.getMsgPtr(), static_cast<std::uint32_t>(length)});
    }

    Bytes input;
    ASN1BERDecodeBuffer buffer;
    T value;
    int status;
};

} // namespace norvane::testing
