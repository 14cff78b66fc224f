#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace norvane {

// What one run has decided, and from what. docs/evidence.md tells the format.

/// A file that is no evidence, or none that is to be relied on; `what` is the reason.
class BadEvidence : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The members of an archive by their names.
using Members = std::map<std::string, std::string>;

inline constexpr std::string_view manifest_name = "manifest.json";
inline constexpr std::string_view verdicts_name = "verdicts.jsonl";
inline constexpr std::string_view records_name = "records.jsonl";

/// Objects are named after their content: "objects/", the SHA-256 in small hexadecimal digits, and
/// ".cer" or ".crl".
using ObjectNames = std::vector<std::string>;

enum class ObjectType : std::uint8_t { certificate, crl };

[[nodiscard]] std::string object_member_name(std::string_view encoded, ObjectType type);

/// A retrieval, as the decision was told of it.
struct EvidenceRetrieval {
    std::string url;
    std::string kind;    ///< "crl" or "certificate"
    std::string from;    ///< "cache" or "network": where it might be looked for
    std::string outcome; ///< its code in the record
    std::uint32_t error = 0;
    std::string cause;
    bool remembered = false; ///< the failure was one of lately
    bool confirmed = false;  ///< a server said that the cache's response is still right
    std::uint64_t milliseconds = 0;
    std::uint64_t octets = 0;
    std::uint64_t age_seconds = 0;
    ObjectNames objects;
};

/// What the decision read from a clock, in milliseconds since it first read that clock.
struct EvidenceReading {
    std::uint32_t clock = 0; ///< NORVANE_CLOCK_...
    std::int64_t milliseconds = 0;
};

struct EvidenceCertificate {
    std::string name;
    std::string object;
};

/// One call of the revocation check.
struct EvidenceCheck {
    std::string time;
    std::vector<EvidenceCertificate> certificates;
    ObjectNames consulted; ///< the objects of its record, in the order of first appearance
    std::vector<EvidenceRetrieval> retrievals;
    std::vector<EvidenceReading> readings;
};

struct EvidenceStores {
    ObjectNames root;
    ObjectNames ca;
    std::vector<ObjectNames> certs;
    std::optional<ObjectNames> crls; ///< nothing: the store CA served
    std::optional<std::string> issuer;
};

struct EvidenceOptions {
    std::optional<std::string> time;
    std::optional<std::uint32_t> timeout_ms;
    bool cache_only = false;
    bool accumulative = false;
    bool strict_pkup = false;
    bool list = false;
};

struct EvidenceMember {
    std::string sha256;
    std::uint64_t octets = 0;
};

struct Evidence {
    std::string program;
    EvidenceOptions options;
    std::map<std::string, std::string> settings; ///< by section, a point, and key
    std::map<std::string, std::uint64_t> limits; ///< by their keys in section [limits]
    bool strict_pkup = false;                    ///< what the options and the settings come to
    std::vector<std::string> faults;             ///< of inputs, as they were told
    EvidenceStores stores;
    std::vector<EvidenceCheck> checks;
    std::map<std::string, EvidenceMember> members; ///< all but the manifest
};

} // namespace norvane
