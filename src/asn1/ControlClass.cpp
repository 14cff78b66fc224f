#include "asn1/ControlClass.h"

#include "asn1/BerHeader.h"
#include "asn1/Tag.h"

#include <cstring>

namespace norvane {

int encode_to(ASN1BEREncodeBuffer& buffer, const ASN1T_Name& value) {
    const std::uint32_t length = encoded_length(value);
    auto* const out = static_cast<std::uint8_t*>(rtMemHeapAlloc(buffer.getCtxt(), length));
    encode(value, out);
    return buffer.setMessage({out, length});
}

int encode_to(ASN1BEREncodeBuffer& buffer, const ASN1T_GeneralNames& value) {
    const std::uint32_t content = value.content.length;
    const std::uint32_t length = 1 + length_octets(content) + content;
    auto* const out = static_cast<std::uint8_t*>(rtMemHeapAlloc(buffer.getCtxt(), length));
    *out = octet(Tag::sequence);
    std::uint8_t* const elements = write_length(out + 1, content);
    if (content != 0) {
        std::memcpy(elements, value.content.data, content);
    }
    return buffer.setMessage({out, length});
}

} // namespace norvane
