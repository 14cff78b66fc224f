#include "asn1/GostPublicKeyParameters.h"

namespace norvane {

using Parameters = ASN1T_GostR3410_94_PublicKeyParameters;

constinit const std::array<Parameters::Field, 3> Parameters::fields{
    {{"publicKeyParamSet", &Parameters::publicKeyParamSet},
     {"digestParamSet", &Parameters::digestParamSet},
     {"encryptionParamSet", &Parameters::encryptionParamSet}}};

void decode(Reader& in, Parameters& out) {
    const std::uint8_t* const start = in.position();
    Reader fields = in.enter(Tag::sequence, Parameters::type_name);
    std::size_t count = 0;
    for (const auto& [name, member] : Parameters::fields) {
        if (count++ < Parameters::required_fields || !fields.at_end()) {
            out.*member = fields.object_identifier(Tag::object_identifier, name);
        }
    }
    out.m.encryptionParamSetPresent = out.encryptionParamSet.content().empty() ? 0 : 1;
    fields.finish();
    out.encoding = in.since(start);
}

} // namespace norvane
