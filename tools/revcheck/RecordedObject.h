#pragma once

#include <norvane/wincrypt.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace norvane {

/// A certificate or CRL of a record, as far as it can be read.
struct RecordedObject {
    bool is_crl = false;
    std::string name;     ///< of the subject, or of a CRL's issuer; UTF-8, not yet printable
    std::string issuer;   ///< of a certificate
    std::string serial;   ///< of a certificate
    std::string from;     ///< notBefore or thisUpdate, as "2026-01-31T09:30:00Z"
    std::string until;    ///< notAfter or nextUpdate; empty if there is none
    std::size_t size = 0; ///< octets
    std::string encoded;  ///< DER; the last octets alone of a large object that was not kept
};

/// Whether large objects are kept.
enum class Keeping : std::uint8_t { small_objects, all_objects };

/// Of the object's DER, in hexadecimal; empty of a large object that was not kept.
[[nodiscard]] std::string sha256_of(const RecordedObject& object);

/// Whether these are the octets that the object was made from. Of a large object that was not kept
/// the size and the last octets must do, which are those of its signature.
[[nodiscard]] bool is_same(const RecordedObject& object, const NORVANE_RECORD_OBJECT& other);

/// Reads what there is to read. It costs the same for a CRL of any length, unless that is kept.
[[nodiscard]] RecordedObject make_recorded_object(const NORVANE_RECORD_OBJECT& object,
                                                  Keeping keeping);

} // namespace norvane
