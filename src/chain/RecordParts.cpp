#include "chain/RecordParts.h"

#include "chain/UrlName.h"
#include "values/CompareTimes.h"
#include "values/EncodeValue.h"
#include "values/NameText.h"

#include <norvane/wincrypt.h>

#include <cstdio>
#include <exception>

namespace norvane {
namespace {

std::string calendar_text(const SYSTEMTIME& time) {
    constexpr std::size_t room = 64; // six numbers of five digits at most, and what is between them
    std::array<char, room> text{};
    std::snprintf(text.data(), text.size(), "%04u-%02u-%02uT%02u:%02u:%02uZ", time.wYear,
                  time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond);
    return text.data();
}

std::string hexadecimal(ByteView octets) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t octet : octets) {
        text += digits[octet >> 4U];
        text += digits[octet & 0x0FU];
    }
    return text;
}

std::string utf8(const WideString& wide) {
    const auto convert = [&](LPSTR out, int room) {
        return WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()), out,
                                   room, nullptr, nullptr);
    };
    std::string text(static_cast<std::size_t>(wide.empty() ? 0 : convert(nullptr, 0)), '\0');
    if (!text.empty()) {
        convert(text.data(), static_cast<int>(text.size()));
    }
    return text;
}

} // namespace

std::string RecordText<ASN1T_Time>::of(const ASN1T_Time& time) {
    SYSTEMTIME fields{};
    const FILETIME file_time = to_file_time(date_from_asn1_time(time.text, time.t));
    FileTimeToSystemTime(&file_time, &fields);
    return calendar_text(fields);
}

std::string RecordText<ASN1CUTCTime>::of(const ASN1CUTCTime& time) {
    // The getters of a time leave it as it is, but note in it what they fail at.
    return calendar_text(system_time(const_cast<ASN1CUTCTime&>(time)));
}

std::string RecordText<CACMPT_CERT_NAME>::of(const CACMPT_CERT_NAME& name) {
    try {
        return utf8(name_blob_to_text(name.encoded));
    } catch (const CAException&) {
        return RecordText<CACMPT_BLOB>::of(name.encoded);
    }
}

std::string RecordText<CACMPT_BLOB>::of(const CACMPT_BLOB& blob) {
    return hexadecimal({blob.data, blob.length});
}

std::string RecordText<Reasons>::of(const Reasons& reasons) {
    constexpr const char* names[] = {
        "unused",     "keyCompromise",        "cACompromise",    "affiliationChanged",
        "superseded", "cessationOfOperation", "certificateHold", "privilegeWithdrawn"};
    constexpr std::uint8_t first = 0x80;
    if ((reasons.bits & all_reasons) == all_reasons) {
        return "all";
    }
    std::string text;
    for (std::size_t bit = 0; bit < std::size(names); ++bit) {
        if ((reasons.bits & (first >> bit)) != 0) {
            text += text.empty() ? "" : " ";
            text += names[bit];
        }
    }
    return text.empty() ? "none" : text;
}

std::string RecordText<StoreHandle>::of(const StoreHandle& store) {
    return store.is_root() ? "Root" : "another store";
}

std::string RecordText<DistributionPointItem>::of(const DistributionPointItem& point) {
    if (!point.distribution_point) {
        return "absent";
    }
    const CACMPT_BLOB& encoded = *point.distribution_point;
    ASN1T_DistributionPointName name;
    decode_value({encoded.data, encoded.length}, name, source_module::chain, __LINE__);
    std::string text;
    if (name.t == ASN1T_DistributionPointName::fullName_chosen) {
        for (const ASN1T_GeneralName& each : name.fullName.elements) {
            if (each.t == ASN1T_GeneralName::uniformResourceIdentifier) {
                text += (text.empty() ? "" : " ") + url_text(each);
            } else if (each.t == ASN1T_GeneralName::directoryName) {
                text += (text.empty() ? "" : " ") +
                        utf8(name_blob_to_text({each.value.data, each.value.length}));
            }
        }
    }
    return text.empty() ? hexadecimal({encoded.data, encoded.length}) : text;
}

std::string RecordText<FaultInFlight>::of(const FaultInFlight& /*fault*/) {
    try {
        throw;
    } catch (const std::exception& fault) {
        return fault.what();
    } catch (...) {
        return "not an exception of the standard library";
    }
}

} // namespace norvane
