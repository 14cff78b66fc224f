#include "platform/store/ObjectFault.h"

namespace norvane {
namespace {

DWORD error_code(ASN1Status status) {
    switch (status) {
    case ASN1Status::unexpected_end:
    case ASN1Status::bad_length: // Nearly always one that leads past the end.
        return CRYPT_E_ASN1_EOD;
    case ASN1Status::unexpected_tag:
        return CRYPT_E_ASN1_BADTAG;
    case ASN1Status::trailing_bytes:
        return CRYPT_E_ASN1_NOEOD;
    case ASN1Status::nested_too_deeply:
        return CRYPT_E_ASN1_LARGE;
    default:
        return CRYPT_E_ASN1_CORRUPT;
    }
}

} // namespace

ObjectFault object_fault(const ASN1CTXT& ctxt) {
    return {error_code(ctxt.failure.status), rtErrGetText(ctxt)};
}

} // namespace norvane
