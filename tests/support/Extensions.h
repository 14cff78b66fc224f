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
[[nodiscard]] Bytes key_usage(const Bits& bits);
// The purposes in dotted decimal.
[[nodiscard]] Bytes ext_key_usage(const std::vector<std::string>& purposes);

[[nodiscard]] Bytes subject_key_identifier(const Bytes& key_id);
// `serial` is the content octets of the INTEGER.
[[nodiscard]] Bytes authority_key_identifier(const std::optional<Bytes>& key_id,
                                             const std::vector<Bytes>& issuer = {},
                                             const std::optional<Bytes>& serial = {});
// caIssuers, one access description for each URL.
[[nodiscard]] Bytes authority_info_access(const std::vector<std::string>& urls);

struct DistributionPoint {
    std::vector<Bytes> full_name = {};         // general names
    std::vector<Attribute> relative_name = {}; // nameRelativeToCRLIssuer, beside no full_name
    std::optional<Bits> reasons = std::nullopt;
    std::vector<Bytes> crl_issuer = {}; // general names
};
[[nodiscard]] Bytes crl_distribution_points(const std::vector<DistributionPoint>& points);
[[nodiscard]] Bytes freshest_crl(const std::vector<DistributionPoint>& points);

struct IssuingDistributionPoint {
    std::vector<Bytes> full_name = {};
    std::vector<Attribute> relative_name = {};
    bool only_user_certificates = false;
    bool only_ca_certificates = false;
    std::optional<Bits> only_some_reasons = std::nullopt;
    bool indirect = false;
    bool only_attribute_certificates = false;
};
[[nodiscard]] Bytes issuing_distribution_point(const IssuingDistributionPoint& point);

// These three take a whole INTEGER: integer(5), or integer_octets() for odd ones.
[[nodiscard]] Bytes crl_number(const Bytes& number);
[[nodiscard]] Bytes delta_crl_indicator(const Bytes& base_number);
[[nodiscard]] Bytes ca_version(const Bytes& version);
// 1.2.643.2.2.49.1, an ENUMERATED.
[[nodiscard]] Bytes crl_kind(int kind);

// For entries of CRLs.
[[nodiscard]] Bytes reason_code(int reason);
[[nodiscard]] Bytes certificate_issuer(const std::vector<Bytes>& names);

} // namespace norvane::testing
