#pragma once

#include "asn1/CommonTypes.h"
#include "asn1/Time.h"
#include "items/ChainBase.h"
#include "record/Record.h"
#include "store/StoreHandle.h"

#include <cstdint>

namespace norvane {

// What chain/ tells of in a record.

[[nodiscard]] inline RecordPart told(const CertificateItem& item,
                                     const char* role = "certificate") {
    const CACMPT_BLOB& encoded = item.encoded();
    return {RecordPart::Kind::certificate, role, {encoded.data, encoded.length}};
}

[[nodiscard]] inline RecordPart told(const CRLItem& item, const char* role = "crl") {
    const CACMPT_BLOB& encoded = item.encoded();
    return {RecordPart::Kind::crl, role, {encoded.data, encoded.length}};
}

/// What is thrown away in a handler, in its words.
struct FaultInFlight {};

/// A set of the reasons of RFC 5280 4.2.1.13, as the items have them.
struct Reasons {
    std::uint8_t bits;
};

/// As "2026-01-31T09:30:00Z".
template <>
struct RecordText<ASN1T_Time> {
    static std::string of(const ASN1T_Time& time);
};
template <>
struct RecordText<ASN1CUTCTime> {
    static std::string of(const ASN1CUTCTime& time);
};
/// As "CN=a, O=b"; the names of distribution points in hexadecimal.
template <>
struct RecordText<CACMPT_CERT_NAME> {
    static std::string of(const CACMPT_CERT_NAME& name);
};
/// In hexadecimal.
template <>
struct RecordText<CACMPT_BLOB> {
    static std::string of(const CACMPT_BLOB& blob);
};
/// As "keyCompromise cACompromise"; "all" and "none" for those.
template <>
struct RecordText<Reasons> {
    static std::string of(const Reasons& reasons);
};
/// "Root", or "another store".
template <>
struct RecordText<StoreHandle> {
    static std::string of(const StoreHandle& store);
};
template <>
struct RecordText<FaultInFlight> {
    static std::string of(const FaultInFlight& fault);
};

/// "absent" where a point has no name.
template <>
struct RecordText<DistributionPointItem> {
    static std::string of(const DistributionPointItem& point);
};

/// How many elements a container has.
template <class Container>
[[nodiscard]] RecordPart told_count(const char* name, const Container& container) noexcept {
    return {RecordPart::Kind::value,
            name,
            {},
            [](const void* value) {
                return std::to_string(static_cast<const Container*>(value)->size());
            },
            &container};
}

[[nodiscard]] inline RecordPart told(const DistributionPointItem& point) {
    return record_value("distributionPoint", point);
}

[[nodiscard]] inline RecordPart told(const StoreHandle& store) {
    return record_value("source", store);
}

/// The exception that is being handled. Only in a handler.
[[nodiscard]] inline RecordPart told_fault() {
    static constexpr FaultInFlight fault;
    return record_value("fault", fault);
}

} // namespace norvane
