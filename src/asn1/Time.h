#pragma once

#include "asn1/ASN1Context.h"
#include "asn1/MessageBuffer.h"

#include <cstddef>
#include <ctime>
#include <string_view>

namespace norvane {

/// A time of ASN.1 as calendar fields in UTC over its text.
///
/// The object is bound to a text, given by reference, and reads it when it is made; setters write
/// it anew in the memory of the buffer's context. The fields are the value and the text follows
/// them: the year is always the full one, also where the text of the type has two digits.
///
/// Getters return the field, or a negative status with the failure in the context if the text is
/// not a time of the type. Fractions of a second are dropped.
class ASN1CTime {
  public:
    ASN1CTime(const ASN1CTime&) = delete;
    ASN1CTime& operator=(const ASN1CTime&) = delete;
    ~ASN1CTime() = default;

    [[nodiscard]] int getYear() { return field(fields_.year); }
    [[nodiscard]] int getMonth() { return field(fields_.month); }
    [[nodiscard]] int getDay() { return field(fields_.day); }
    [[nodiscard]] int getHour() { return field(fields_.hour); }
    [[nodiscard]] int getMinute() { return field(fields_.minute); }
    [[nodiscard]] int getSecond() { return field(fields_.second); }

    /// Makes the time 1 January of year 1, 00:00:00, and the text empty, for the setters to follow.
    void clear();

    // Each sets one field and returns 0, or a negative status with the time unchanged if the value
    // is out of range: years 1 to 9999, days by the month and year as they are at that moment.
    [[nodiscard]] int setYear(int year);
    [[nodiscard]] int setMonth(int month);
    [[nodiscard]] int setDay(int day);
    [[nodiscard]] int setHour(int hour);
    [[nodiscard]] int setMinute(int minute);
    [[nodiscard]] int setSecond(int second);

    /// Sets all fields from seconds since 1970-01-01 00:00:00 UTC. Returns 0 or a negative status.
    [[nodiscard]] int setTime(std::time_t seconds);

    /// The length of the text without a terminator, or a negative status if there is none: the
    /// time was not read, or its type cannot express the year.
    [[nodiscard]] int getTimeStringLen();

    /// Copies the text and a terminating zero to `buffer`, of `size` bytes. Returns 0 or a
    /// negative status.
    [[nodiscard]] int getTimeString(char* buffer, std::size_t size);

    [[nodiscard]] ASN1CTXT& getCtxt() { return buffer_.getCtxt(); }

  protected:
    enum class Form { utc_time, generalized_time };

    ASN1CTime(ASN1MessageBuffer& buffer, std::string_view& text, Form form);

  private:
    struct Fields {
        int year = 1;
        int month = 1;
        int day = 1;
        int hour = 0;
        int minute = 0;
        int second = 0;
    };
    class TextReader;

    [[nodiscard]] int field(int value) { return valid_ ? value : not_a_time(); }
    [[nodiscard]] int set(int Fields::*member, int value);
    [[nodiscard]] int not_a_time();
    [[nodiscard]] const char* type_name() const;
    void write_text();

    ASN1MessageBuffer& buffer_;
    std::string_view& text_;
    Fields fields_;
    Form form_;
    bool valid_ = false;
};

/// UTCTime, "YYMMDDhhmm[ss](Z|+hhmm|-hhmm)". Years 50 to 99 are 19xx, 00 to 49 are 20xx (RFC 5280
/// 4.1.2.5.1). For a year outside 1950 to 2049 the object holds the right year and has no text.
class ASN1CUTCTime final : public ASN1CTime {
  public:
    /// An empty `text` makes an object that has yet to be set.
    ASN1CUTCTime(ASN1MessageBuffer& buffer, std::string_view& text)
        : ASN1CTime(buffer, text, Form::utc_time) {}
};

/// GeneralizedTime, "YYYYMMDDhh[mm[ss[.f...]]](Z|+hhmm|-hhmm)". A local time, without a zone, is
/// refused: nobody could say what moment it is.
class ASN1CGeneralizedTime final : public ASN1CTime {
  public:
    ASN1CGeneralizedTime(ASN1MessageBuffer& buffer, std::string_view& text)
        : ASN1CTime(buffer, text, Form::generalized_time) {}
};

} // namespace norvane
