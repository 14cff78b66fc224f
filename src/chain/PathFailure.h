#pragma once

#include "chain/ChainValidator.h"
#include "chain/TrustStatus.h"

#include <cstdint>

namespace norvane {

// The records of failed paths. Each is kept as best_path if it is less bad than the one that stands
// there, by compare_status; an equally bad one does not displace it. `position` is an element of
// the path.

/// Keeps the whole path, `status` marked on the element and on the path.
void record_failure(ChainValidator& chain, std::uint32_t status, Chain::Position position);

/// The same with a CRL reason code beside the status, on the element and on the path.
void record_revoked(ChainValidator& chain, std::uint32_t status, std::uint32_t reason,
                    Chain::Position position);

/// Keeps the whole path with `status`, no element marked.
void record_partial_chain(ChainValidator& chain, std::uint32_t status);

/// Keeps the part of the path from `position` to the end with IS_PARTIAL_CHAIN, no element marked:
/// what stands before it did not issue it.
void record_broken_link(ChainValidator& chain, Chain::Position position);

} // namespace norvane
