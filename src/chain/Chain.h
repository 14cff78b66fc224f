#pragma once

// The decision about one certificate: fill a ChainValidator, call verify, read the result.

#include "chain/ChainValidator.h" // IWYU pragma: export
#include "chain/Run.h"            // IWYU pragma: export
#include "chain/RunStatus.h"      // IWYU pragma: export
