#include "support/Extensions.h"

namespace norvane::testing {
namespace {

Bytes flag(int number, bool value) { return value ? context_primitive(number, {0xff}) : Bytes{}; }

Bytes optional_content(int number, const std::optional<Bytes>& content) {
    return content ? context_primitive(number, *content) : Bytes{};
}

Bytes optional_names(int number, const std::vector<Bytes>& names) {
    return names.empty() ? Bytes{} : context(number, names);
}

Bytes optional_reasons(int number, const std::optional<Bits>& reasons) {
    return reasons ? context_primitive(number, reasons->content()) : Bytes{};
}

// The field distributionPoint [0] that both kinds of points begin with.
Bytes point_name(const auto& point) {
    if (!point.full_name.empty())
        return context(0, context(0, point.full_name));
    if (point.relative_name.empty())
        return {};
    Bytes relative = rdn(point.relative_name);
    relative[0] = 0xa1; // [1] IMPLICIT
    return context(0, relative);
}

Bytes points_extension(std::string_view type, const std::vector<DistributionPoint>& points) {
    Bytes members;
    for (const DistributionPoint& point : points)
        append(members, sequence(point_name(point), optional_reasons(1, point.reasons),
                                 optional_names(2, point.crl_issuer)));
    return extension(type, Critical::no, sequence(members));
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

Bytes ext_key_usage(const std::vector<std::string>& purposes) {
    Bytes members;
    for (const std::string& purpose : purposes)
        append(members, oid(purpose));
    return extension("2.5.29.37", Critical::no, sequence(members));
}

Bytes authority_key_identifier(const std::optional<Bytes>& key_id, const std::vector<Bytes>& issuer,
                               const std::optional<Bytes>& serial) {
    return extension("2.5.29.35", Critical::no,
                     sequence(optional_content(0, key_id), optional_names(1, issuer),
                              optional_content(2, serial)));
}

Bytes authority_info_access(const std::vector<std::string>& urls) {
    Bytes members;
    for (const std::string& location : urls)
        append(members, sequence(oid("1.3.6.1.5.5.7.48.2"), url(location)));
    return extension("1.3.6.1.5.5.7.1.1", Critical::no, sequence(members));
}

Bytes crl_distribution_points(const std::vector<DistributionPoint>& points) {
    return points_extension("2.5.29.31", points);
}

Bytes freshest_crl(const std::vector<DistributionPoint>& points) {
    return points_extension("2.5.29.46", points);
}

Bytes issuing_distribution_point(const IssuingDistributionPoint& point) {
    return extension("2.5.29.28", Critical::yes,
                     sequence(point_name(point), flag(1, point.only_user_certificates),
                              flag(2, point.only_ca_certificates),
                              optional_reasons(3, point.only_some_reasons),
                              flag(4, point.indirect)));
}

} // namespace norvane::testing
