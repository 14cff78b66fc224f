#include "chain/RetrievalClock.h"

#include "record/Record.h"
#include "values/Exceptions.h"

#include <norvane/wincrypt.h>

namespace norvane {

CACMPT_Date retrieval_clock() {
    SYSTEMTIME fields{};
    GetSystemTime(&fields);
    FILETIME time{};
    SystemTimeToFileTime(&fields, &time);
    return from_file_time(time);
}

CACMPT_Date time_since(const CACMPT_Date& start) { return difference(retrieval_clock(), start); }

DWORD whole_milliseconds(const CACMPT_Date& length) {
    try {
        return static_cast<DWORD>(divide(length, CACMPT_Date::one_millisecond));
    } catch (const CAException&) {
        note(event::timeout_too_large);
        throw;
    }
}

} // namespace norvane
