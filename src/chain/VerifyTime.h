#pragma once

#include "asn1/Time.h"
#include "values/Date.h"

#include <norvane/wincrypt.h>

namespace norvane {

/// Sets the time to a calendar time in UTC. Milliseconds and the day of the week are dropped.
/// Throws Asn1Exception for a calendar time that does not exist.
void set_time(ASN1CTime& time, const SYSTEMTIME& fields);

/// The calendar fields of the time, with 0 for milliseconds and day of the week. Throws
/// Asn1Exception if the time is none.
[[nodiscard]] SYSTEMTIME system_time(ASN1CTime& time);

} // namespace norvane
