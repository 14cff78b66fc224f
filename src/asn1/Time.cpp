#include "asn1/Time.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>

namespace norvane {
namespace {

constexpr int first_utc_time_year = 1950; // RFC 5280 4.1.2.5.1
constexpr int last_utc_time_year = 2049;
constexpr int last_year = 9999;

bool is_digit(char c) { return c >= '0' && c <= '9'; }

} // namespace

/// Reads the text of a time from its start to its end.
class ASN1CTime::TextReader {
  public:
    explicit TextReader(std::string_view text) : text_(text) {}

    std::optional<Fields> read(Form form) {
        Fields fields;
        bool ok =
            form == Form::utc_time ? read_short_year(fields.year) : read_number(4, fields.year);
        ok = ok && read_number(2, fields.month) && read_number(2, fields.day) &&
             read_number(2, fields.hour);
        const bool has_minutes = form == Form::utc_time || next_is_digit();
        ok = ok && (!has_minutes || read_number(2, fields.minute));
        const bool has_seconds = has_minutes && next_is_digit();
        ok = ok && (!has_seconds || read_number(2, fields.second));
        if (form == Form::generalized_time && has_seconds) {
            ok = ok && skip_fraction();
        }
        int offset_minutes = 0;
        ok = ok && read_zone(offset_minutes) && text_.empty();
        if (!ok || !is_valid(fields)) {
            return std::nullopt;
        }
        return in_utc(fields, offset_minutes);
    }

    static bool is_valid(const Fields& fields) {
        const auto lies_in = [](int value, int first, int last) {
            return value >= first && value <= last;
        };
        // The types of a calendar date hold a field modulo 256 only.
        return lies_in(fields.year, 1, last_year) && lies_in(fields.month, 1, 12) &&
               lies_in(fields.day, 1, 31) && date_of(fields).ok() && lies_in(fields.hour, 0, 23) &&
               lies_in(fields.minute, 0, 59) && lies_in(fields.second, 0, 59);
    }

    static std::optional<Fields> from_seconds(std::chrono::sys_seconds moment) {
        constexpr std::chrono::sys_days first{std::chrono::year{1} / 1 / 1};
        constexpr std::chrono::sys_days last{std::chrono::year{last_year} / 12 / 31};
        const auto day = std::chrono::floor<std::chrono::days>(moment);
        if (day < first || day > last) {
            return std::nullopt;
        }
        const std::chrono::year_month_day date{day};
        const std::chrono::hh_mm_ss time{moment - day};
        return Fields{static_cast<int>(date.year()),
                      static_cast<int>(static_cast<unsigned>(date.month())),
                      static_cast<int>(static_cast<unsigned>(date.day())),
                      static_cast<int>(time.hours().count()),
                      static_cast<int>(time.minutes().count()),
                      static_cast<int>(time.seconds().count())};
    }

  private:
    static std::chrono::year_month_day date_of(const Fields& fields) {
        return std::chrono::year{fields.year} /
               std::chrono::month{static_cast<unsigned>(fields.month)} /
               std::chrono::day{static_cast<unsigned>(fields.day)};
    }

    static std::optional<Fields> in_utc(const Fields& fields, int offset_minutes) {
        if (offset_minutes == 0) {
            return fields;
        }
        const std::chrono::sys_seconds moment =
            std::chrono::sys_days{date_of(fields)} + std::chrono::hours{fields.hour} +
            std::chrono::minutes{fields.minute - offset_minutes} +
            std::chrono::seconds{fields.second};
        return from_seconds(moment);
    }

    [[nodiscard]] bool next_is_digit() const { return !text_.empty() && is_digit(text_.front()); }

    bool read_number(std::size_t digits, int& value) {
        value = 0;
        for (std::size_t i = 0; i < digits; ++i) {
            if (!next_is_digit()) {
                return false;
            }
            value = value * 10 + (text_.front() - '0');
            text_.remove_prefix(1);
        }
        return true;
    }

    bool read_short_year(int& year) {
        const bool ok = read_number(2, year);
        year += year < first_utc_time_year % 100 ? 2000 : 1900;
        return ok;
    }

    bool skip_fraction() {
        if (text_.empty() || (text_.front() != '.' && text_.front() != ',')) {
            return true;
        }
        text_.remove_prefix(1);
        const bool has_digits = next_is_digit();
        while (next_is_digit()) {
            text_.remove_prefix(1);
        }
        return has_digits;
    }

    bool read_zone(int& offset_minutes) {
        if (text_.empty()) {
            return false;
        }
        const char sign = text_.front();
        text_.remove_prefix(1);
        if (sign == 'Z') {
            return true;
        }
        int hours = 0;
        int minutes = 0;
        const bool ok = (sign == '+' || sign == '-') && read_number(2, hours) &&
                        read_number(2, minutes) && hours < 24 && minutes < 60;
        offset_minutes = (sign == '-' ? -1 : 1) * (hours * 60 + minutes);
        return ok;
    }

    std::string_view text_;
};

ASN1CTime::ASN1CTime(ASN1MessageBuffer& buffer, std::string_view& text, Form form)
    : buffer_(buffer), text_(text), form_(form) {
    if (const std::optional<Fields> fields = TextReader(text).read(form)) {
        fields_ = *fields;
        valid_ = true;
    }
}

void ASN1CTime::clear() {
    fields_ = {};
    text_ = {};
    valid_ = false;
}

int ASN1CTime::setYear(int year) { return set(&Fields::year, year); }
int ASN1CTime::setMonth(int month) { return set(&Fields::month, month); }
int ASN1CTime::setDay(int day) { return set(&Fields::day, day); }
int ASN1CTime::setHour(int hour) { return set(&Fields::hour, hour); }
int ASN1CTime::setMinute(int minute) { return set(&Fields::minute, minute); }
int ASN1CTime::setSecond(int second) { return set(&Fields::second, second); }

int ASN1CTime::set(int Fields::*member, int value) {
    Fields changed = fields_;
    changed.*member = value;
    if (!TextReader::is_valid(changed)) {
        return rtErrSetData(getCtxt(), {.status = ASN1Status::bad_value,
                                        .element = type_name(),
                                        .offset = 0,
                                        .expected = "a field of a calendar date and time",
                                        .found = std::to_string(value)});
    }
    fields_ = changed;
    valid_ = true;
    write_text();
    return code(ASN1Status::ok);
}

int ASN1CTime::setTime(std::time_t seconds) {
    const std::optional<Fields> fields =
        TextReader::from_seconds(std::chrono::sys_seconds{std::chrono::seconds{seconds}});
    if (!fields) {
        return rtErrSetData(getCtxt(), {.status = ASN1Status::bad_value,
                                        .element = type_name(),
                                        .offset = 0,
                                        .expected = "a moment in the years 1 to 9999",
                                        .found = std::to_string(seconds) + " seconds since 1970"});
    }
    fields_ = *fields;
    valid_ = true;
    write_text();
    return code(ASN1Status::ok);
}

void ASN1CTime::write_text() {
    const bool two_digit_year = form_ == Form::utc_time;
    text_ = {};
    if (two_digit_year &&
        (fields_.year < first_utc_time_year || fields_.year > last_utc_time_year)) {
        return;
    }
    std::array<char, 16> digits{}; // "YYYYMMDDhhmmssZ" and its terminator
    const int length =
        std::snprintf(digits.data(), digits.size(), "%0*d%02d%02d%02d%02d%02dZ",
                      two_digit_year ? 2 : 4, two_digit_year ? fields_.year % 100 : fields_.year,
                      fields_.month, fields_.day, fields_.hour, fields_.minute, fields_.second);
    const auto size = static_cast<std::size_t>(length);
    auto* const text = static_cast<char*>(rtMemHeapAlloc(getCtxt(), size));
    std::memcpy(text, digits.data(), size);
    text_ = {text, size};
}

int ASN1CTime::getTimeStringLen() {
    return text_.empty() || !valid_ ? not_a_time() : static_cast<int>(text_.size());
}

int ASN1CTime::getTimeString(char* buffer, std::size_t size) {
    if (const int length = getTimeStringLen(); length < 0) {
        return length;
    }
    if (size <= text_.size()) {
        return rtErrSetData(getCtxt(), {.status = ASN1Status::buffer_too_small,
                                        .element = type_name(),
                                        .offset = 0,
                                        .expected = std::to_string(text_.size() + 1) + " bytes",
                                        .found = std::to_string(size)});
    }
    std::memcpy(buffer, text_.data(), text_.size());
    buffer[text_.size()] = '\0';
    return code(ASN1Status::ok);
}

int ASN1CTime::not_a_time() {
    return rtErrSetData(
        getCtxt(),
        {.status = ASN1Status::bad_value,
         .element = type_name(),
         .offset = 0,
         .expected = valid_ ? "a year that two digits can tell" : "a time in UTC or with its zone",
         .found = valid_ ? std::to_string(fields_.year) : quoted(text_)});
}

const char* ASN1CTime::type_name() const {
    return form_ == Form::utc_time ? "UTCTime" : "GeneralizedTime";
}

} // namespace norvane
