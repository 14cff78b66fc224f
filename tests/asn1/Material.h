// Certificates and CRLs that between them hold every form that the runtime reads. Nothing is
// signed: the bytes are the same in every process.
#pragma once

#include "support/CertificateBuilder.h"
#include "support/CrlBuilder.h"

namespace norvane::testing {

// SEQUENCE { tbs, algorithm, BIT STRING } with a signature of nobody's.
[[nodiscard]] Bytes with_signature(const Bytes& tbs);

// RDNs of one and of several values; strings of all types, one in segments, and a value of a type
// that its attribute does not have.
[[nodiscard]] Bytes varied_name();

// One GeneralName of each of the nine alternatives.
[[nodiscard]] std::vector<Bytes> all_general_names();

// Each extension whose value is decoded, and one that is not known.
[[nodiscard]] std::vector<Bytes> certificate_extensions();
[[nodiscard]] std::vector<Bytes> crl_extensions();

// The content of the element, and that of the extension's extnValue.
[[nodiscard]] Bytes content_of(const Bytes& element);
[[nodiscard]] Bytes value_of(const Bytes& extension);

// A certificate of some 700 octets with what most certificates have.
[[nodiscard]] Bytes typical_certificate();
// With all optional fields.
[[nodiscard]] Bytes full_certificate();

// Entries of every shape, behind them plain ones of the usual shape.
[[nodiscard]] std::vector<CrlEntry> varied_entries();
[[nodiscard]] Bytes full_crl(const std::vector<CrlEntry>& entries = varied_entries());

} // namespace norvane::testing
