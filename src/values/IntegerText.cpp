#include "values/IntegerText.h"

#include "asn1/Integer.h"
#include "values/Exceptions.h"

#include <algorithm>

namespace norvane {

void integer_text_to_blob(std::string_view text, CACMPT_BLOB& blob) {
    constexpr std::uint8_t sign_bit = 0x80;
    ASN1CTXT ctxt;
    ASN1BigInt number;
    rtBigIntInit(number);
    if (rtBigIntSetStr(ctxt, number, text, 0) < 0) {
        throw Asn1Exception(rtErrGetText(ctxt), source_module::asn1_util, __LINE__);
    }
    if (!number.negative && (number.magnitude.front() & sign_bit) != 0) {
        number.magnitude.insert(number.magnitude.begin(), 0);
    }
    std::reverse(number.magnitude.begin(), number.magnitude.end());
    blob.assign(number.magnitude.data(), static_cast<std::uint32_t>(number.magnitude.size()));
}

} // namespace norvane
