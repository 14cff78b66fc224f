#pragma once

#include "asn1/ASN1Context.h"
#include "asn1/ByteView.h"

namespace norvane {

/// Takes the next element, header and all, off the bytes that xd_setp has set; its tag may be any,
/// its lengths have any form that BER knows. What is nested in it is looked at only as far as it
/// takes to find the end of an indefinite length, in time linear in the element. Returns 0, or a
/// negative status with the failure in `ctxt`.
[[nodiscard]] int xd_element(ASN1CTXT& ctxt, ByteView& element);

} // namespace norvane
