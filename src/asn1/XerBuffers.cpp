#include "asn1/XerBuffers.h"

namespace norvane {

void ASN1XEREncodeBuffer::init() {
    releaseContext();
    text_.clear();
}

} // namespace norvane
