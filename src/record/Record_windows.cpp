#include "record/Record.h"

namespace norvane {

// The platform there has no listeners to be told.

bool record_is_wanted() noexcept { return false; }

void send_event(RecordKind /*kind*/, const Event& /*event*/,
                std::span<const RecordPart> /*parts*/) noexcept {}

} // namespace norvane
