#pragma once

#include "asn1/ASN1Context.h"

#include <norvane/wincrypt.h>

#include <string>

namespace norvane {

/// Why bytes are not taken as a certificate or CRL: the last error for it, and words.
struct ObjectFault {
    DWORD error;
    std::string text;
};

/// The last failure of a decoding context.
[[nodiscard]] ObjectFault object_fault(const ASN1CTXT& ctxt);

} // namespace norvane
