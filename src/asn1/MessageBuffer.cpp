#include "asn1/MessageBuffer.h"

namespace norvane {

const ASN1ContextPtr& ASN1MessageBuffer::getContext() {
    if (context_.get() == nullptr) {
        context_ = ASN1ContextPtr::adopt(ASN1Context::create());
    }
    return context_;
}

void ASN1BERDecodeBuffer::setBuffer(const std::uint8_t* bytes, std::uint32_t length) {
    releaseContext();
    bytes_ = {bytes, length};
}

int ASN1BEREncodeBuffer::setMessage(ByteView message) {
    if (message.empty()) {
        return rtErrSetData(getCtxt(), {.status = ASN1Status::nothing_to_encode,
                                        .element = "value",
                                        .offset = 0,
                                        .expected = "a decoded value",
                                        .found = "one that was never filled"});
    }
    message_ = message;
    return static_cast<int>(message.length);
}

void ASN1BEREncodeBuffer::init() {
    releaseContext();
    message_ = {};
}

} // namespace norvane
