#include "support/Extensions.h"

namespace norvane::testing {
namespace {

Bytes optional_boolean(std::uint8_t number, bool value) {
    return value ? context_primitive(number, {0xff}) : Bytes{};
}

Bytes optional_names(std::uint8_t number, const std::vector<Bytes>& names) {
    return names.empty() ? Bytes{} : context(number, names);
}

Bytes optional_reasons(std::uint8_t number, const std::optional<Bits>& reasons) {
    return reasons ? context_primitive(number, cat(Bytes{reasons->unused}, reasons->octets))
                   : Bytes{};
}

// DistributionPointName in the [0] of either kind of point.
Bytes optional_point_name(const std::vector<Bytes>& full_name,
                          const std::vector<Attribute>& relative_name) {
    if (!full_name.empty())
        return context(0, context(0, full_name));
    if (relative_name.empty())
        return {};
    Bytes relative = rdn(relative_name);
    relative[0] = 0xa1; // [1] IMPLICIT RelativeDistinguishedName
    return context(0, relative);
}

Bytes points_value(const std::vector<DistributionPoint>& points) {
    std::vector<Bytes> members;
    for (const DistributionPoint& point : points)
        members.push_back(sequence(optional_point_name(point.full_name, point.relative_name),
                                   optional_reasons(1, point.reasons),
                                   optional_names(2, point.crl_issuer)));
    return sequence(members);
}

} // namespace

Bytes extension(std::string_view type, Critical critical, const Bytes& value) {
    return sequence(oid(type), critical == Critical::yes ? boolean(true) : Bytes{},
                    octet_string(value));
}

Bytes basic_constraints(Holder holder, std::optional<int> path_length) {
    return extension("2.5.29.19", Critical::yes,
                     sequence(holder == Holder::ca ? boolean(true) : Bytes{},
                              path_length ? integer(*path_length) : Bytes{}));
}

Bytes key_usage(const Bits& bits) {
    return extension("2.5.29.15", Critical::yes, bit_string(bits));
}

Bytes ext_key_usage(const std::vector<std::string>& purposes) {
    std::vector<Bytes> members;
    for (const std::string& purpose : purposes)
        members.push_back(oid(purpose));
    return extension("2.5.29.37", Critical::no, sequence(members));
}

Bytes subject_key_identifier(const Bytes& key_id) {
    return extension("2.5.29.14", Critical::no, octet_string(key_id));
}

Bytes authority_key_identifier(const std::optional<Bytes>& key_id, const std::vector<Bytes>& issuer,
                               const std::optional<Bytes>& serial) {
    return extension("2.5.29.35", Critical::no,
                     sequence(key_id ? context_primitive(0, *key_id) : Bytes{},
                              optional_names(1, issuer),
                              serial ? context_primitive(2, *serial) : Bytes{}));
}

Bytes authority_info_access(const std::vector<std::string>& urls) {
    std::vector<Bytes> members;
    for (const std::string& location : urls)
        members.push_back(sequence(oid("1.3.6.1.5.5.7.48.2"), url(location)));
    return extension("1.3.6.1.5.5.7.1.1", Critical::no, sequence(members));
}

Bytes crl_distribution_points(const std::vector<DistributionPoint>& points) {
    return extension("2.5.29.31", Critical::no, points_value(points));
}

Bytes freshest_crl(const std::vector<DistributionPoint>& points) {
    return extension("2.5.29.46", Critical::no, points_value(points));
}

Bytes issuing_distribution_point(const IssuingDistributionPoint& point) {
    return extension("2.5.29.28", Critical::yes,
                     sequence(optional_point_name(point.full_name, point.relative_name),
                              optional_boolean(1, point.only_user_certificates),
                              optional_boolean(2, point.only_ca_certificates),
                              optional_reasons(3, point.only_some_reasons),
                              optional_boolean(4, point.indirect),
                              optional_boolean(5, point.only_attribute_certificates)));
}

Bytes crl_number(const Bytes& number) { return extension("2.5.29.20", Critical::no, number); }

Bytes delta_crl_indicator(const Bytes& base_number) {
    return extension("2.5.29.27", Critical::yes, base_number);
}

Bytes ca_version(const Bytes& version) {
    return extension("1.3.6.1.4.1.311.21.1", Critical::no, version);
}

Bytes crl_kind(int kind) { return extension("1.2.643.2.2.49.1", Critical::no, enumerated(kind)); }

Bytes reason_code(int reason) { return extension("2.5.29.21", Critical::no, enumerated(reason)); }

Bytes certificate_issuer(const std::vector<Bytes>& names) {
    return extension("2.5.29.29", Critical::yes, sequence(names));
}

} // namespace norvane::testing
