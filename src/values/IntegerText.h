#pragma once

#include "values/ASN1Blob.h"

#include <string_view>

namespace norvane {

/// The bytes of an integer, given as its text, in the byte order of the platform's serial numbers:
/// the magnitude, with a zero byte in front where a positive number would otherwise read as a
/// negative one, least significant byte first. Throws Asn1Exception if the text is no number.
void integer_text_to_blob(std::string_view text, CACMPT_BLOB& blob);

} // namespace norvane
