#include "pkup/UsagePeriod.h"

#include "asn1/ControlClass.h"
#include "asn1/Time.h"

#include <array>
#include <string_view>

namespace norvane {
namespace {

/// Content octets of 2.5.29.16.
constexpr std::array<std::uint8_t, 3> private_key_usage_period{0x55, 0x1d, 16};

/// The texts of the extension's fields.
struct PeriodTexts {
    std::optional<ByteView> not_before;
    std::optional<ByteView> not_after;
};

void decode(Reader& in, PeriodTexts& out) {
    Reader fields = in.enter(Tag::sequence, "PrivateKeyUsagePeriod");
    if (fields.next_is_string(context(0))) {
        out.not_before = fields.string(context(0), "notBefore");
    }
    if (fields.next_is_string(context(1))) {
        out.not_after = fields.string(context(1), "notAfter");
    }
    fields.finish();
}

/// The moment of a GeneralizedTime, or nothing if the text is none.
std::optional<std::chrono::sys_seconds> moment_of(ASN1MessageBuffer& buffer, ByteView octets) {
    using namespace std::chrono;
    std::string_view text(reinterpret_cast<const char*>(octets.data), octets.length);
    ASN1CGeneralizedTime time(buffer, text);
    const int year_number = time.getYear();
    if (year_number < 0) {
        return std::nullopt;
    }
    const year_month_day date = year{year_number} / month{static_cast<unsigned>(time.getMonth())} /
                                day{static_cast<unsigned>(time.getDay())};
    return sys_days{date} + hours{time.getHour()} + minutes{time.getMinute()} +
           seconds{time.getSecond()};
}

/// Reads a bound if it is there. False if it is no time.
bool read_bound(ASN1MessageBuffer& buffer, const std::optional<ByteView>& octets,
                std::optional<std::chrono::sys_seconds>& bound) {
    if (octets) {
        bound = moment_of(buffer, *octets);
    }
    return bound.has_value() == octets.has_value();
}

std::optional<UsagePeriod> read_extension(ASN1MessageBuffer& buffer, ByteView value) {
    PeriodTexts texts;
    const int status = decode_with(buffer.getCtxt(), value, DecodeReport::silent, [&](Reader& in) {
        texts = {};
        decode(in, texts);
    });
    UsagePeriod period;
    if (status != code(ASN1Status::ok) || (!texts.not_before && !texts.not_after) ||
        !read_bound(buffer, texts.not_before, period.not_before) ||
        !read_bound(buffer, texts.not_after, period.not_after)) {
        return std::nullopt;
    }
    return period;
}

} // namespace

std::optional<UsagePeriod> read_usage_period(ByteView certificate) {
    ASN1BERDecodeBuffer buffer(certificate.data, certificate.length);
    ASN1T_Certificate decoded;
    ASN1C_Certificate control(buffer, decoded);
    if (control.DecodeFrom(buffer) < 0) {
        return std::nullopt;
    }
    const ByteView wanted{private_key_usage_period.data(), private_key_usage_period.size()};
    const ASN1T_Extension* found = nullptr;
    for (const ASN1T_Extension& extension : decoded.tbsCertificate.extensions) {
        if (extension.extnID.content() == wanted) {
            if (found != nullptr) {
                return std::nullopt;
            }
            found = &extension;
        }
    }
    return found != nullptr ? read_extension(buffer, found->extnValue) : UsagePeriod{};
}

} // namespace norvane
