#include "values/CompareTimes.h"

#include "values/Exceptions.h"

#include <ctime>

namespace norvane {
namespace {

int value_or_throw(int result, ASN1CTime& time) {
    if (result < 0) {
        throw Asn1Exception(rtErrGetText(time.getCtxt()), source_module::asn1_util, __LINE__);
    }
    return result;
}

/// Binds a local time object of the type that `time` has and gives it to `use`.
template <class Use>
auto with_time_object(std::string_view text, int kind, const char* message, std::string_view module,
                      Use use) {
    ASN1BEREncodeBuffer buffer;
    switch (kind) {
    case ASN1T_Time::utcTime_chosen: {
        ASN1CUTCTime object(buffer, text);
        return use(object);
    }
    case ASN1T_Time::generalTime_chosen: {
        ASN1CGeneralizedTime object(buffer, text);
        return use(object);
    }
    default:
        throw Asn1DecodeException(message, module, __LINE__);
    }
}

} // namespace

int compare_time_fields(ASN1CTime& a, ASN1CTime& b) {
    constexpr int (ASN1CTime::*getters[])() = {&ASN1CTime::getYear,   &ASN1CTime::getMonth,
                                               &ASN1CTime::getDay,    &ASN1CTime::getHour,
                                               &ASN1CTime::getMinute, &ASN1CTime::getSecond};
    for (const auto getter : getters) {
        const int difference = value_or_throw((a.*getter)(), a) - value_or_throw((b.*getter)(), b);
        if (difference != 0) {
            return difference;
        }
    }
    return 0;
}

int compare_times(const ASN1T_Time& a, ASN1CTime& b) {
    return with_time_object(a.text, a.t, "Unsupported ASN1T_Time.t", source_module::asn1_util,
                            [&b](ASN1CTime& object) { return compare_time_fields(object, b); });
}

int compare_times(const ASN1T_Time& a, const ASN1T_Time& b) {
    return with_time_object(b.text, b.t, "Unsupported ASN1T_Time.t", source_module::asn1_util,
                            [&a](ASN1CTime& object) { return compare_times(a, object); });
}

CACMPT_Date date_from_asn1_time(std::string_view text, int kind) {
    return with_time_object(
        text, kind, "Unknown time format.", source_module::asn1_traits, [](ASN1CTime& object) {
            const auto get = [&object](int (ASN1CTime::*getter)()) {
                return static_cast<WORD>(value_or_throw((object.*getter)(), object));
            };
            SYSTEMTIME fields{};
            fields.wYear = get(&ASN1CTime::getYear);
            fields.wMonth = get(&ASN1CTime::getMonth);
            fields.wDay = get(&ASN1CTime::getDay);
            fields.wHour = get(&ASN1CTime::getHour);
            fields.wMinute = get(&ASN1CTime::getMinute);
            fields.wSecond = get(&ASN1CTime::getSecond);
            return from_system_time(fields);
        });
}

void set_time_now(ASN1CTime& time) { value_or_throw(time.setTime(std::time(nullptr)), time); }

std::string_view time_text(ASN1MessageBuffer& buffer, ASN1CTime& time) {
    const auto length = static_cast<std::size_t>(value_or_throw(time.getTimeStringLen(), time));
    auto* const text = static_cast<char*>(rtMemHeapAlloc(buffer.getCtxt(), length + 1));
    value_or_throw(time.getTimeString(text, length + 1), time);
    return {text, length};
}

} // namespace norvane
