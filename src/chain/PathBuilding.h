#pragma once

#include "chain/ChainValidator.h"

namespace norvane {

/// Puts the certificate at the front of the path and looks for the rest of the way to a trust
/// anchor, depth first. On true the whole path has passed validate_path and stays; on false the
/// path is as it was, and best_path tells what was wrong if that was less bad than before. Never
/// throws: any exception counts as false.
[[nodiscard]] bool push_and_extend(ChainValidator& chain, ItemCache::value_type& certificate);

} // namespace norvane
