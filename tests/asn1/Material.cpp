#include "asn1/Material.h"

namespace norvane::testing {
namespace {

Bytes algorithm() { return sequence(oid("1.2.840.10045.4.3.2")); }

Bytes public_key() {
    return sequence(sequence(oid("1.2.840.10045.2.1"), oid("1.2.840.10045.3.1.7")),
                    bit_string(Bytes(65, 0x04)));
}

std::vector<DistributionPoint> points() {
    return {{.full_name = {url("http://crl.example.org/a.crl"), url("ldap://example.org/b")}},
            {.relative_name = {{"2.5.4.3", printable("CRL1")}, {"2.5.4.11", utf8("O")}},
             .reasons = named_bits({1, 8}),
             .crl_issuer = {directory_name(common_name("Indirect"))}}};
}

} // namespace

Bytes with_signature(const Bytes& tbs) {
    return sequence(tbs, algorithm(), bit_string(Bytes(64, 0x5a)));
}

Bytes varied_name() {
    return sequence(
        rdn({{"2.5.4.6", printable("RU")}}), rdn({{"0.9.2342.19200300.100.1.25", ia5("example")}}),
        rdn({{"2.5.4.10", utf8("\u041e\u041e\u041e")}, {"2.5.4.11", bmp(u"\u0416")}}),
        rdn({{"2.5.4.7", teletex("M\xf6rsk")}, {"2.5.4.8", tlv(0x1c, hex("0000041c 0001f600"))}}),
        rdn({{"1.2.840.113549.1.9.1", ia5("a@example.org")}, {"2.5.4.5", printable("1")}}),
        rdn({{"2.5.4.3", ber_segments(0x0c, {octet_string({'a', 'b'}), octet_string({'c'})})}}),
        rdn({{"2.5.4.12", bit_string({7})}, {"2.999.4294967295.4294967296", sequence()}}));
}

std::vector<Bytes> all_general_names() {
    return {context(0, oid("1.2.3"), context(0, utf8("other"))),
            context_primitive(1, text_bytes("a@example.org")),
            context_primitive(2, text_bytes("example.org")),
            context(3, sequence(printable("x400"))),
            directory_name(common_name("Directory")),
            context(5, context(1, utf8("edi"))),
            url("http://example.org/"),
            context_primitive(7, {127, 0, 0, 1}),
            context_primitive(8, {0x2a, 0x03})};
}

std::vector<Bytes> certificate_extensions() {
    return {subject_key_identifier(Bytes(20, 0x11)),
            authority_key_identifier(Bytes(20, 0x22), {directory_name(common_name("Root"))},
                                     Bytes{0x00, 0x80}),
            key_usage(named_bits({digital_signature, key_cert_sign, crl_sign, 8})),
            ext_key_usage({"1.3.6.1.5.5.7.3.1", "1.3.6.1.5.5.7.3.9"}),
            basic_constraints(Holder::ca, 3),
            crl_distribution_points(points()),
            freshest_crl(points()),
            authority_info_access({"http://ca.example.org/ca.cer", "ldap://example.org/ca"}),
            ca_version(integer(0x10002)),
            extension("2.5.29.17", Critical::no, sequence(all_general_names()))};
}

std::vector<Bytes> crl_extensions() {
    return {authority_key_identifier(Bytes(20, 0x22)),
            crl_number(integer_octets(Bytes(20, 0x7f))),
            delta_crl_indicator(integer(5)),
            freshest_crl(points()),
            issuing_distribution_point({.relative_name = {{"2.5.4.3", printable("CRL1")}},
                                        .only_ca_certificates = true,
                                        .only_some_reasons = named_bits({1, 5}),
                                        .indirect = true}),
            crl_kind(1)};
}

Bytes content_of(const Bytes& element) {
    const std::ptrdiff_t header = element[1] < 0x80 ? 2 : 2 + (element[1] & 0x7f);
    return {element.begin() + header, element.end()};
}

Bytes value_of(const Bytes& extension) {
    Bytes fields = content_of(extension);
    fields.erase(fields.begin(), fields.begin() + 2 + fields[1]); // extnID
    if (fields[0] == 0x01) {
        fields.erase(fields.begin(), fields.begin() + 3); // critical
    }
    return content_of(fields);
}

Bytes typical_certificate() {
    const std::vector<Bytes> extensions = certificate_extensions();
    return with_signature(
        CertificateBuilder{.issuer = varied_name(),
                           .spki = public_key(),
                           .extensions = {extensions.begin(), extensions.begin() + 6}}
            .tbs(algorithm()));
}

Bytes full_certificate() {
    const auto optional_part = [](std::uint8_t number) {
        return context_primitive(number, {0x03, 0xab, 0xcd});
    };
    return with_signature(
        CertificateBuilder{.serial = {0xff, 0x7f},
                           .issuer = varied_name(),
                           .not_before = utc_time("4912312359Z"),
                           .not_after = generalized_time("20500101000000.5+0300"),
                           .subject = sequence(),
                           // Behind the key stand the unique identifiers.
                           .spki = cat(public_key(), optional_part(1), optional_part(2)),
                           .extensions = certificate_extensions()}
            .tbs(algorithm()));
}

std::vector<CrlEntry> varied_entries() {
    std::vector<CrlEntry> entries{
        {.serial = {0x00}},
        {.serial = {0x80, 0x00}, .date = generalized_time("20260101000000Z")},
        {.serial = Bytes(127, 0x7e), .extensions = {reason_code(1)}},
        {.serial = Bytes(300, 0x7e), .extensions = {reason_code(1)}},
        {.serial = {0x02}, .date = utc_time("2601010000Z")},
        {.serial = {0x03}, .extensions = {Bytes{}}},
        {.serial = {0x04}, .extensions = {reason_code(1), certificate_issuer({url("x")})}},
        {.serial = {0x08},
         .extensions = {sequence(oid("2.5.29.21"), boolean(false), octet_string(enumerated(2)))}},
        {.serial = {0x05}, .extensions = {certificate_issuer(all_general_names())}},
        {.serial = {0x06}, .extensions = {extension("2.5.29.21", Critical::yes, enumerated(8))}},
        {.serial = {0x07}, .extensions = {extension("2.5.29.21", Critical::no, null())}}};
    for (std::uint8_t i = 1; i < 12; ++i) {
        entries.push_back({.serial = Bytes(i, i), .extensions = {}});
        entries.push_back({.serial = Bytes(17U - i, i), .extensions = {reason_code(i % 11)}});
    }
    return entries;
}

Bytes full_crl(const std::vector<CrlEntry>& entries) {
    return with_signature(
        CrlBuilder{.issuer = varied_name(), .entries = entries, .extensions = crl_extensions()}.tbs(
            algorithm()));
}

} // namespace norvane::testing
