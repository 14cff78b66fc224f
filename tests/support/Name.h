// Names of X.501 for tests (RFC 5280, 4.1.2.4) and the general names (4.2.1.6) that tests need.
#pragma once

#include "support/Der.h"

#include <string>
#include <string_view>
#include <vector>

namespace norvane::testing {

struct Attribute {
    std::string type; // dotted decimal
    Bytes value;      // a whole element
};

// One RelativeDistinguishedName, its attributes in the given order. A Name with RDNs of several
// values is sequence(rdn({a, b}), rdn({c})).
[[nodiscard]] Bytes rdn(const std::vector<Attribute>& attributes);
// A Name with one attribute to each RDN: name({{"2.5.4.6", printable("RU")}, ...}).
[[nodiscard]] Bytes name(const std::vector<Attribute>& attributes);
// A Name with nothing but a commonName, a PrintableString.
[[nodiscard]] Bytes common_name(std::string_view text);

// GeneralName: uniformResourceIdentifier [6], and directoryName [4] around a whole Name.
[[nodiscard]] Bytes url(std::string_view text);
[[nodiscard]] Bytes directory_name(const Bytes& name);

} // namespace norvane::testing
