#pragma once

#include "chain/ChainValidator.h"

namespace norvane {

/// Whether the revocation of a member of the path is settled for good: by this run, by the
/// providers that the platform's dispatcher asks, or because chain_flags want no check of it. False
/// leaves a record.
///
/// `issuer` is the element before it, or the element itself at the root. Throws CryptException if
/// the question cannot be put to the platform, CAException as the arithmetic of time-outs does, and
/// as encoded() does.
[[nodiscard]] bool delegated_revocation_check(ChainValidator& chain, Chain::Position element,
                                              Chain::Position issuer);

} // namespace norvane
