#include "asn1/ElementExtent.h"

#include "asn1/BerHeader.h"

#include <utility>

namespace norvane {

int xd_element(ASN1CTXT& ctxt, ByteView& element) {
    const ByteView input = ctxt.unread;
    const std::uint8_t* at = input.begin();
    std::uint32_t open = 0; // elements of indefinite length whose end is still to come
    do {
        if (open != 0 && input.end() - at >= 2 && at[0] == 0 && at[1] == 0) {
            at += 2;
            --open;
            continue;
        }
        BerHeader header;
        ASN1Failure failure;
        if (!read_ber_header(input, at, input.end(), header, failure)) {
            return rtErrSetData(ctxt, std::move(failure));
        }
        open += header.indefinite ? 1 : 0;
        at = header.content + header.length;
    } while (open != 0);
    element = {input.begin(), static_cast<std::uint32_t>(at - input.begin())};
    ctxt.unread = {at, input.length - element.length};
    return code(ASN1Status::ok);
}

} // namespace norvane
