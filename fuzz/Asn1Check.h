// What the first octet of an input of asn1_fuzzer selects.
#pragma once

#include <cstdint>

namespace norvane::testing {

enum class Asn1Check : std::uint8_t {
    certificate,
    tbs_certificate,
    certificate_list,
    tbs_cert_list,
    name,
    general_names,
    distribution_point_name,
    authority_info_access,
    subject_key_identifier,
    key_usage,
    basic_constraints,
    crl_number,
    crl_reason,
    crl_distribution_points,
    issuing_distribution_point,
    authority_key_identifier,
    ext_key_usage,
    utc_time,
    generalized_time,
    integer_text,
    object_identifier,
    character_string,
    minimal_lengths,
    count
};

} // namespace norvane::testing
