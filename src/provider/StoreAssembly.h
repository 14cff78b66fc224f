#pragma once

#include "chain/ChainValidator.h"
#include "provider/RevocationParameters.h"

namespace norvane {

/// Gives the run its stores: "Root", "CA", one with the issuer hint and that context's store, and
/// the caller's. A system store that cannot be opened is left out in silence. Each store is
/// referenced anew and closed with `chain`.
///
/// Throws CAException "Store handle is NULL." for a null store of the caller, and CryptException
/// for what is no store, and PlatformFailure if the process is to blame for what is missing.
void assemble_stores(ChainValidator& chain, const RevocationParameters& parameters);

} // namespace norvane
