#include "platform/store/FieldBlock.h"

#include "asn1/Time.h"

#include <algorithm>
#include <string_view>

namespace norvane {
namespace {

constexpr int first_file_time_year = 1601;

template <class Time>
std::optional<FILETIME> read_time(std::string_view text) {
    ASN1BERDecodeBuffer buffer;
    Time time(buffer, text);
    const int year = time.getYear();
    if (year < 0) {
        return std::nullopt;
    }
    FILETIME file_time{};
    if (year >= first_file_time_year) {
        const auto field = [](int value) { return static_cast<WORD>(value); };
        const SYSTEMTIME fields{.wYear = field(year),
                                .wMonth = field(time.getMonth()),
                                .wDayOfWeek = 0,
                                .wDay = field(time.getDay()),
                                .wHour = field(time.getHour()),
                                .wMinute = field(time.getMinute()),
                                .wSecond = field(time.getSecond()),
                                .wMilliseconds = 0};
        SystemTimeToFileTime(&fields, &file_time);
    }
    return file_time;
}

} // namespace

CRYPT_DATA_BLOB to_blob(ByteView view) { return {view.length, const_cast<BYTE*>(view.data)}; }

CRYPT_BIT_BLOB to_bit_blob(const ASN1TBitStr& bits) {
    const CRYPT_DATA_BLOB octets = to_blob(bits.octets());
    return {octets.cbData, octets.pbData, octets.cbData * 8 - bits.numbits};
}

std::optional<FILETIME> to_file_time(const ASN1T_Time& time) {
    return time.t == ASN1T_Time::utcTime_chosen ? read_time<ASN1CUTCTime>(time.text)
                                                : read_time<ASN1CGeneralizedTime>(time.text);
}

LPSTR FieldBlock::text(const ASN1TObjId& identifier) {
    auto* const start = reinterpret_cast<char*>(next_);
    next_ = reinterpret_cast<std::byte*>(write_object_identifier_text(identifier, start));
    return start;
}

CRYPT_DATA_BLOB FieldBlock::little_endian(ByteView integer) {
    auto* const start = reinterpret_cast<BYTE*>(next_);
    std::reverse_copy(integer.begin(), integer.end(), start);
    next_ += integer.length;
    return {integer.length, start};
}

CRYPT_DATA_BLOB FieldBlock::encoding(const ASN1T_Name& name) {
    auto* const start = reinterpret_cast<BYTE*>(next_);
    BYTE* const end = encode(name, start);
    next_ = reinterpret_cast<std::byte*>(end);
    return {static_cast<DWORD>(end - start), start};
}

CRYPT_ALGORITHM_IDENTIFIER FieldBlock::algorithm(const ASN1T_AlgorithmIdentifier& algorithm) {
    return {text(algorithm.algorithm), to_blob(algorithm.parameters)};
}

} // namespace norvane
