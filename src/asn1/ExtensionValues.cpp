#include "asn1/ExtensionValues.h"

namespace norvane {
namespace {

std::uint32_t unsigned_integer(Reader& in, const char* element) {
    const std::uint8_t* const start = in.position();
    const std::optional<std::uint32_t> value =
        in.integer(Tag::integer, element).to_uint32_saturated();
    if (!value) {
        in.fail(ASN1Status::bad_value, element, start, "an INTEGER from 0 up", "a negative one");
    }
    return value.value_or(0);
}

/// BOOLEAN DEFAULT FALSE
bool optional_boolean(Reader& in, Tag tag, const char* element) {
    return in.next_is(tag) && in.boolean(tag, element);
}

} // namespace

void decode(Reader& in, ASN1T_SubjectKeyIdentifier& out) {
    out.octets = in.string(Tag::octet_string, "SubjectKeyIdentifier");
}

void decode(Reader& in, ASN1T_KeyUsage& out) {
    out.bits = in.bit_string(Tag::bit_string, "KeyUsage");
}

void decode(Reader& in, ASN1T_BasicConstraints& out) {
    Reader fields = in.enter(Tag::sequence, "BasicConstraints");
    out.cA = optional_boolean(fields, Tag::boolean, "cA");
    if (fields.next_is(Tag::integer)) {
        out.pathLenConstraint = unsigned_integer(fields, "pathLenConstraint");
        out.m.pathLenConstraintPresent = 1;
    }
    fields.finish();
}

void decode(Reader& in, ASN1T_CRLNumber& out) { out.value = unsigned_integer(in, "CRLNumber"); }

void decode(Reader& in, ASN1T_CRLReason& out) {
    constexpr std::int32_t largest = 255;
    const std::uint8_t* const start = in.position();
    const std::int32_t value = in.int32(Tag::enumerated, "CRLReason");
    if (value < 0 || value > largest) {
        in.fail(ASN1Status::bad_value, "CRLReason", start, "0 to 255", "another number");
        return;
    }
    out.value = value;
}

namespace {

void decode(Reader& in, ASN1T_DistributionPoint& out) {
    Reader fields = in.enter(Tag::sequence, "DistributionPoint");
    if (fields.next_is(constructed(context(0)))) {
        Reader choice = fields.enter(constructed(context(0)), "distributionPoint");
        decode(choice, out.distributionPoint);
        choice.finish();
        out.m.distributionPointPresent = 1;
    }
    if (fields.next_is_string(context(1))) {
        out.reasons = fields.bit_string(context(1), "reasons");
        out.m.reasonsPresent = 1;
    }
    if (fields.next_is(constructed(context(2)))) {
        decode(fields, out.cRLIssuer, constructed(context(2)), "cRLIssuer");
        out.m.cRLIssuerPresent = 1;
    }
    fields.finish();
}

} // namespace

void decode(Reader& in, ASN1T_CRLDistributionPoints& out) {
    Reader points = in.enter(Tag::sequence, "CRLDistributionPoints");
    while (!points.at_end()) {
        decode(points, out.elements.append(in.memory()));
    }
}

void decode(Reader& in, ASN1T_IssuingDistributionPoint& out) {
    Reader fields = in.enter(Tag::sequence, "IssuingDistributionPoint");
    if (fields.next_is(constructed(context(0)))) {
        Reader choice = fields.enter(constructed(context(0)), "distributionPoint");
        decode(choice, out.distributionPoint);
        choice.finish();
        out.m.distributionPointPresent = 1;
    }
    out.onlyContainsUserCerts = optional_boolean(fields, context(1), "onlyContainsUserCerts");
    out.onlyContainsCACerts = optional_boolean(fields, context(2), "onlyContainsCACerts");
    if (fields.next_is_string(context(3))) {
        out.onlySomeReasons = fields.bit_string(context(3), "onlySomeReasons");
        out.m.onlySomeReasonsPresent = 1;
    }
    out.indirectCRL = optional_boolean(fields, context(4), "indirectCRL");
    out.onlyContainsAttributeCerts =
        optional_boolean(fields, context(5), "onlyContainsAttributeCerts");
    fields.finish();
}

void decode(Reader& in, ASN1T_AuthorityKeyIdentifier& out) {
    Reader fields = in.enter(Tag::sequence, "AuthorityKeyIdentifier");
    if (fields.next_is_string(context(0))) {
        out.keyIdentifier = fields.string(context(0), "keyIdentifier");
        out.m.keyIdentifierPresent = 1;
    }
    if (fields.next_is(constructed(context(1)))) {
        decode(fields, out.authorityCertIssuer, constructed(context(1)), "authorityCertIssuer");
        out.m.authorityCertIssuerPresent = 1;
    }
    if (fields.next_is(context(2))) {
        out.authorityCertSerialNumber = fields.integer(context(2), "authorityCertSerialNumber");
        out.m.authorityCertSerialNumberPresent = 1;
    }
    fields.finish();
}

void decode(Reader& in, ASN1T_ExtKeyUsageSyntax& out) {
    Reader usages = in.enter(Tag::sequence, "ExtKeyUsageSyntax");
    while (!usages.at_end()) {
        out.elements.append(in.memory()) =
            usages.object_identifier(Tag::object_identifier, "KeyPurposeId");
    }
}

void decode(Reader& in, ASN1T_AuthorityInfoAccessSyntax& out) {
    const std::uint8_t* const start = in.position();
    Reader descriptions = in.enter(Tag::sequence, "AuthorityInfoAccessSyntax");
    while (!descriptions.at_end()) {
        Reader fields = descriptions.enter(Tag::sequence, "AccessDescription");
        ASN1T_AccessDescription& description = out.elements.append(in.memory());
        description.accessMethod = fields.object_identifier(Tag::object_identifier, "accessMethod");
        decode(fields, description.accessLocation, "accessLocation");
        fields.finish();
    }
    out.encoding = in.since(start);
}

} // namespace norvane
