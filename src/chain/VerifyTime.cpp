#include "chain/VerifyTime.h"

#include "values/Exceptions.h"

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
        throw Asn1Exception(rtErrGetText(time.getCtxt()), source_module::chain, __LINE__);
    }
    return result;
}

} // namespace

void set_time(ASN1CTime& time, const SYSTEMTIME& fields) {
    time.clear();
    for (const Field& field : fields_in_order) {
        value_or_throw((time.*field.set)(fields.*field.member), time);
    }
}

SYSTEMTIME system_time(ASN1CTime& time) {
    SYSTEMTIME fields{};
    for (const Field& field : fields_in_order) {
        fields.*field.member = static_cast<WORD>(value_or_throw((time.*field.get)(), time));
    }
    return fields;
}

} // namespace norvane
