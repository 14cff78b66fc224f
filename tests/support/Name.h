// Names of X.501 for tests (RFC 5280, 4.1.2.4) and the general names (4.2.1.6) that tests need.
#pragma once

#include "support/Der.h"

#include <string>

namespace norvane::testing {

struct Attribute {
    std::string type; // dotted decimal
    Bytes value;      // a whole element
};

// One RelativeDistinguishedName, its attributes in the given order. A Name with RDNs of several
// values is sequence(rdn({a, b}), rdn({c})).
[[nodiscard]] inline Bytes rdn(const std::vector<Attribute>& attributes) {
    Bytes members;
    for (const Attribute& attribute : attributes)
        append(members, sequence(oid(attribute.type), attribute.value));
    return set(members);
}
// A Name with one attribute to each RDN: name({{"2.5.4.6", printable("RU")}, ...}).
[[nodiscard]] inline Bytes name(const std::vector<Attribute>& attributes) {
    Bytes rdns;
    for (const Attribute& attribute : attributes)
        append(rdns, rdn({attribute}));
    return sequence(rdns);
}
// A Name with nothing but a commonName, a PrintableString.
[[nodiscard]] inline Bytes common_name(std::string_view text) {
    return name({{"2.5.4.3", printable(text)}});
}

// GeneralName: uniformResourceIdentifier [6], and directoryName [4] around a whole Name.
[[nodiscard]] inline Bytes url(std::string_view text) {
    return context_primitive(6, text_bytes(text));
}
[[nodiscard]] inline Bytes directory_name(const Bytes& name) { return context(4, name); }

} // namespace norvane::testing
