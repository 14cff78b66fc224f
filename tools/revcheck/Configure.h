#pragma once

#include "ObjectInput.h"
#include "Options.h"

namespace norvane {

/// Lays down in the configuration of this process what the options say, before anything is read
/// from it. Throws UsageError for a value that the configuration cannot take.
void configure(const Options& options);

/// As the configuration wants a list of paths: absolute, with colons between them, and a backslash
/// before what would else be one.
[[nodiscard]] std::string path_list(const std::vector<std::string>& paths);

/// Tells the problems of the configuration, with file and line. True if there are none.
[[nodiscard]] bool has_sound_configuration(const FaultSink& faults);

} // namespace norvane
