#pragma once

#include "asn1/CommonTypes.h"
#include "asn1/Time.h"
#include "values/Date.h"

#include <norvane/wincrypt.h>

#include <string_view>

namespace norvane {

// Validity is decided on the calendar fields of times, in whole seconds; ticks take no part.
//
// All of these throw Asn1Exception, with the runtime's text, for a text that is not a time, and
// Asn1DecodeException for a choice that is neither UTCTime nor GeneralizedTime.

/// The first difference, `a` less `b`, of year, month, day, hour, minute and second in this order;
/// 0 if all are equal.
[[nodiscard]] int compare_time_fields(ASN1CTime& a, ASN1CTime& b);

/// compare_time_fields for decoded times, whose types may differ.
[[nodiscard]] int compare_times(const ASN1T_Time& a, ASN1CTime& b);
[[nodiscard]] int compare_times(const ASN1T_Time& a, const ASN1T_Time& b);

/// The date of a time's text; `kind` is the alternative of ASN1T_Time. A calendar time before 1601
/// throws date_exception.
[[nodiscard]] CACMPT_Date date_from_asn1_time(std::string_view text, int kind);

/// The calendar fields of the time, with 0 for milliseconds and day of the week.
[[nodiscard]] SYSTEMTIME system_time(ASN1CTime& time);

/// Sets the time object to a calendar time in UTC, whose milliseconds and day of the week are
/// dropped. Throws Asn1Exception for a calendar time that does not exist.
void set_time(ASN1CTime& time, const SYSTEMTIME& fields);

/// Sets the time object to the system's clock, in whole seconds of UTC.
void set_time_now(ASN1CTime& time);

/// A copy of the time object's text in the memory of the buffer's context, with a terminating zero
/// behind it.
[[nodiscard]] std::string_view time_text(ASN1MessageBuffer& buffer, ASN1CTime& time);

} // namespace norvane
