#pragma once

#include "HtmlWriter.h"
#include "RecordedObject.h"

#include <norvane/wincrypt.h>

#include <span>
#include <string>

namespace norvane {

/// A certificate or CRL on a line of time.
struct TimeSpan {
    std::string title;
    const RecordedObject* object = nullptr;
};

/// Draws a bar for the validity of each, and the moment of the check across them. The line is as
/// long as the CRLs and the moment need; where a certificate lives longer its bar has an open end.
/// Each text has a line of its own, so none meets another.
void draw_time_line(HtmlWriter& out, std::span<const TimeSpan> spans, const FILETIME& moment);

} // namespace norvane
