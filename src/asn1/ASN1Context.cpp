#include "asn1/ASN1Context.h"

namespace norvane {

int rtInitContext(ASN1CTXT& ctxt) {
    rtFreeContext(ctxt);
    return code(ASN1Status::ok);
}

void rtFreeContext(ASN1CTXT& ctxt) {
    ctxt.memory.release();
    ctxt.failure = {};
    ctxt.unread = {};
    ctxt.flags = 0;
}

void rtCtxtSetFlag(ASN1CTXT& ctxt, ASN1Flag flag) {
    ctxt.flags |= static_cast<std::uint32_t>(flag);
}

bool rtCtxtTestFlag(const ASN1CTXT& ctxt, ASN1Flag flag) {
    return (ctxt.flags & static_cast<std::uint32_t>(flag)) != 0;
}

void* rtMemHeapAlloc(ASN1CTXT& ctxt, std::size_t size) { return ctxt.memory.allocate(size); }

std::string rtErrGetText(const ASN1CTXT& ctxt) {
    const ASN1Failure& failure = ctxt.failure;
    if (failure.status == ASN1Status::ok) {
        return "no error";
    }
    return failure.element + " at offset " + std::to_string(failure.offset) + ": expected " +
           failure.expected + ", found " + failure.found;
}

std::string quoted(std::string_view octets) {
    constexpr std::size_t most_quoted = 40;
    std::string text = "\"";
    for (const char c : octets.substr(0, most_quoted)) {
        text += c >= ' ' && c <= '~' ? c : '?';
    }
    return text + (octets.size() > most_quoted ? "...\"" : "\"");
}

int rtErrSetData(ASN1CTXT& ctxt, ASN1Failure failure) {
    ctxt.failure = std::move(failure);
    return code(ctxt.failure.status);
}

} // namespace norvane
