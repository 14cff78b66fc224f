// Certificate revocation lists for tests (RFC 5280, 5.1).
#pragma once

#include "support/Extensions.h"
#include "support/Key.h"

namespace norvane::testing {

struct CrlEntry {
    Bytes serial;                           // content octets
    Bytes date = utc_time("260201000000Z"); // a whole Time element
    std::vector<Bytes> extensions = {};     // none: the field is left out

    [[nodiscard]] Bytes encode() const;
};

// Every field is put into the list as it stands, valid or not.
struct CrlBuilder {
    int version = 2;                               // 1 or 2; 0 leaves the field out
    std::optional<Bytes> signature_algorithm = {}; // inside the tbs; absent: that of the key
    Bytes issuer = common_name("Issuer");
    Bytes this_update = utc_time("260301000000Z"); // whole Time elements
    std::optional<Bytes> next_update = utc_time("351231235959Z");
    std::vector<CrlEntry> entries = {};
    Bytes encoded_entries = {}; // entries ready-made, joined, behind `entries`
    std::vector<Bytes> extensions = {};

    // TBSCertList; `algorithm` stands in for an absent signature_algorithm.
    [[nodiscard]] Bytes tbs(const Bytes& algorithm = Key::ec(0).signature_algorithm()) const;
    [[nodiscard]] Bytes sign(const Key& key) const {
        return key.sign_element(tbs(key.signature_algorithm()));
    }
};

// A v2 list with `entries` entries of equal length (49 octets), each with a reason code from 1
// to 5.
[[nodiscard]] Bytes large_crl(std::uint32_t entries, const Key& key,
                              const Bytes& issuer = common_name("Issuer"));
// The content octets of entry `index`: 16 octets, positive, a different one for each index in no
// order. Indices from `entries` on give serials that large_crl(entries) does not list.
[[nodiscard]] Bytes large_crl_serial(std::uint32_t index);

} // namespace norvane::testing
