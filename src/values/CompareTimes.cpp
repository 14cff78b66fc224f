#include "values/CompareTimes.h"

#include "values/Exceptions.h"

#include <ctime>

namespace norvane {
namespace {

struct Field {
    int (ASN1CTime::*get)();
    int (ASN1CTime::*set)(int);
    WORD SYSTEMTIME::*member;
};

constexpr Field fields_in_order[] = {
    {&ASN1CTime::getYear, &ASN1CTime::setYear, &SYSTEMTIME::wYear},
    {&ASN1CTime::getMonth, &ASN1CTime::setMonth, &SYSTEMTIME::wMonth},
    {&ASN1CTime::getDay, &ASN1CTime::setDay, &SYSTEMTIME::wDay},
    {&ASN1CTime::getHour, &ASN1CTime::setHour, &SYSTEMTIME::wHour},
    {&ASN1CTime::getMinute, &ASN1CTime::setMinute, &SYSTEMTIME::wMinute},
    {&ASN1CTime::getSecond, &ASN1CTime::setSecond, &SYSTEMTIME::wSecond},
};

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
    for (const Field& field : fields_in_order) {
        const int difference =
            value_or_throw((a.*field.get)(), a) - value_or_throw((b.*field.get)(), b);
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
        text, kind, "Unknown time format.", source_module::asn1_traits,
        [](ASN1CTime& object) { return from_system_time(system_time(object)); });
}

SYSTEMTIME system_time(ASN1CTime& time) {
    SYSTEMTIME fields{};
    for (const Field& field : fields_in_order) {
        fields.*field.member = static_cast<WORD>(value_or_throw((time.*field.get)(), time));
    }
    return fields;
}

void set_time(ASN1CTime& time, const SYSTEMTIME& fields) {
    time.clear();
    for (const Field& field : fields_in_order) {
        value_or_throw((time.*field.set)(fields.*field.member), time);
    }
}

void set_time_now(ASN1CTime& time) { value_or_throw(time.setTime(std::time(nullptr)), time); }

std::string_view time_text(ASN1MessageBuffer& buffer, ASN1CTime& time) {
    const auto length = static_cast<std::size_t>(value_or_throw(time.getTimeStringLen(), time));
    auto* const text = static_cast<char*>(rtMemHeapAlloc(buffer.getCtxt(), length + 1));
    value_or_throw(time.getTimeString(text, length + 1), time);
    return {text, length};
}

} // namespace norvane
