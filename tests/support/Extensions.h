// Makers of Extension elements for certificates, CRLs and entries of CRLs (RFC 5280, 4.2 and 5).
// Each sets `critical` as the RFC advises; extension() makes any other form. General names are
// whole elements, as url() and directory_name() make them; an empty list means an absent field.
#pragma once

#include "support/Name.h"

#include <optional>

namespace norvane::testing {

enum class Critical { no, yes };
// `value` is what the OCTET STRING of extnValue wraps.
[[nodiscard]] Bytes extension(std::string_view type, Critical critical, const Bytes& value);

enum class Holder { end_entity, ca };
[[nodiscard]] Bytes basic_constraints(Holder holder, std::optional<int> path_length = {});

constexpr unsigned digital_signature = 0;
constexpr unsigned key_cert_sign = 5;
constexpr unsigned crl_sign = 6;
[[nodiscard]] inline Bytes key_usage(const Bits& bits) {
    return extension("2.5.29.15", Critical::yes, tlv(0x03, bits.content()));
}
// The purposes in dotted decimal.
[[nodiscard]] Bytes ext_key_usage(const std::vector<std::string>& purposes);

[[nodiscard]] inline Bytes subject_key_identifier(const Bytes& key_id) {
    return extension("2.5.29.14", Critical::no, octet_string(key_id));
}
// `serial` is the content octets of the INTEGER.
[[nodiscard]] Bytes authority_key_identifier(const std::optional<Bytes>& key_id,
                                             const std::vector<Bytes>& issuer = {},
                                             const std::optional<Bytes>& serial = {});
// caIssuers, one access description for each URL.
[[nodiscard]] Bytes authority_info_access(const std::vector<std::string>& urls);

struct DistributionPoint {
    std::vector<Bytes> full_name = {};         // general names
    std::vector<Attribute> relative_name = {}; // nameRelativeToCRLIssuer, beside no full_name
    std::optional<Bits> reasons = {};
    std::vector<Bytes> crl_issuer = {}; // general names
};
[[nodiscard]] Bytes crl_distribution_points(const std::vector<DistributionPoint>& points);
[[nodiscard]] Bytes freshest_crl(const std::vector<DistributionPoint>& points);

struct IssuingDistributionPoint {
    std::vector<Bytes> full_name = {};
    std::vector<Attribute> relative_name = {};
    bool only_user_certificates = false;
    bool only_ca_certificates = false;
    std::optional<Bits> only_some_reasons = {};
    bool indirect = false;
};
[[nodiscard]] Bytes issuing_distribution_point(const IssuingDistributionPoint& point);

// These three take a whole INTEGER: integer(5), or integer_octets() for odd ones.
[[nodiscard]] inline Bytes crl_number(const Bytes& number) {
    return extension("2.5.29.20", Critical::no, number);
}
[[nodiscard]] inline Bytes delta_crl_indicator(const Bytes& base_number) {
    return extension("2.5.29.27", Critical::yes, base_number);
}
[[nodiscard]] inline Bytes ca_version(const Bytes& version) {
    return extension("1.3.6.1.4.1.311.21.1", Critical::no, version);
}
[[nodiscard]] inline Bytes crl_kind(int kind) {
    return extension("1.2.643.2.2.49.1", Critical::no, enumerated(kind));
}

// For entries of CRLs.
[[nodiscard]] inline Bytes reason_code(int reason) {
    return extension("2.5.29.21", Critical::no, enumerated(reason));
}
[[nodiscard]] inline Bytes certificate_issuer(const std::vector<Bytes>& names) {
    return extension("2.5.29.29", Critical::yes, sequence(names));
}

} // namespace norvane::testing
