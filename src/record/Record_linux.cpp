#include "record/Record.h"

#include <norvane/wincrypt.h>

#include <vector>

namespace norvane {
namespace {

constexpr DWORD kind_of(RecordKind kind) noexcept {
    switch (kind) {
    case RecordKind::begin:
        return NORVANE_RECORD_BEGIN;
    case RecordKind::end:
        return NORVANE_RECORD_END;
    case RecordKind::step:
        break;
    }
    return NORVANE_RECORD_STEP;
}

/// What a value says; a value that cannot be read says so.
std::string text_of(const RecordPart& part) {
    try {
        return part.text_of(part.value);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& fault) {
        return std::string("(cannot be read: ") + fault.what() + ")";
    }
}

} // namespace

bool record_is_wanted() noexcept { return NorvaneIsRecordWanted() != FALSE; }

void send_event(RecordKind kind, const Event& event, std::span<const RecordPart> parts) noexcept {
    NORVANE_RECORD_EVENT told{};
    told.cbSize = sizeof told;
    told.dwKind = kind_of(kind);
    told.pszCode = event.code;
    told.pszReference = event.reference;
    try {
        std::vector<NORVANE_RECORD_OBJECT> objects;
        std::vector<NORVANE_RECORD_VALUE> values;
        std::vector<std::string> texts;
        texts.reserve(parts.size());
        for (const RecordPart& part : parts) {
            if (part.kind == RecordPart::Kind::value) {
                values.push_back({part.name, texts.emplace_back(text_of(part)).c_str()});
            } else {
                const bool is_crl = part.kind == RecordPart::Kind::crl;
                objects.push_back({part.name,
                                   is_crl ? DWORD{NORVANE_RECORD_CRL} : NORVANE_RECORD_CERTIFICATE,
                                   part.encoded.data, part.encoded.length});
            }
        }
        told.cObject = static_cast<DWORD>(objects.size());
        told.rgObject = objects.data();
        told.cValue = static_cast<DWORD>(values.size());
        told.rgValue = values.data();
        NorvaneRecordEvent(&told);
    } catch (...) {
        told.cObject = 0;
        told.cValue = 0;
        NorvaneRecordEvent(&told);
    }
}

} // namespace norvane
