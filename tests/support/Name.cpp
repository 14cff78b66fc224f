#include "support/Name.h"

namespace norvane::testing {

Bytes rdn(const std::vector<Attribute>& attributes) {
    std::vector<Bytes> members;
    for (const Attribute& attribute : attributes)
        members.push_back(sequence(oid(attribute.type), attribute.value));
    return set(members);
}

Bytes name(const std::vector<Attribute>& attributes) {
    std::vector<Bytes> rdns;
    for (const Attribute& attribute : attributes)
        rdns.push_back(rdn({attribute}));
    return sequence(rdns);
}

Bytes common_name(std::string_view text) { return name({{"2.5.4.3", printable(text)}}); }

Bytes url(std::string_view text) { return context_primitive(6, text_bytes(text)); }
Bytes directory_name(const Bytes& name) { return context(4, name); }

} // namespace norvane::testing
