#pragma once

#include "asn1/CharString.h"
#include "values/ASN1Blob.h"

namespace norvane {

/// An encoded Name as readable text, "CN=a + OU=b, O=c": RDNs in encoded order, the root first.
/// An attribute of the table in NameText.cpp has its name there and its value as text; any other
/// has its dotted identifier and its value in hexadecimal behind "#". Throws Asn1Exception if the
/// name does not decode, and what attribute_value_to_text throws.
[[nodiscard]] WideString name_blob_to_text(const CACMPT_BLOB& encoded_name);

/// An encoded string as text, by its tag. Throws CAException "Unsupported string type" if it is no
/// string, and Asn1Exception if its octets are not what the type says.
[[nodiscard]] WideString attribute_value_to_text(const CACMPT_BLOB& value_blob);

} // namespace norvane
