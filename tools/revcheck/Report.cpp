#include "Report.h"

#include "values/EncodeValue.h"
#include "values/NameText.h"

#include <iomanip>
#include <string>

namespace norvane {
namespace {

/// UTF-8 from the platform's 16-bit units; an unpaired surrogate becomes U+FFFD.
std::string to_utf8(const WideString& wide) {
    constexpr char32_t replacement = 0xfffd;
    const auto is_unit_of = [](WCHAR unit, char32_t first) {
        return (static_cast<char32_t>(unit) & 0xfc00U) == first;
    };
    std::string text;
    for (std::size_t i = 0; i < wide.size(); ++i) {
        char32_t c = wide[i];
        if (is_unit_of(wide[i], 0xd800) && i + 1 < wide.size() && is_unit_of(wide[i + 1], 0xdc00)) {
            c = 0x10000 + ((c & 0x3ffU) << 10) + (static_cast<char32_t>(wide[++i]) & 0x3ffU);
        } else if ((c & 0xf800U) == 0xd800) {
            c = replacement;
        }
        const int trailing = c < 0x80 ? 0 : c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
        constexpr unsigned lead[] = {0x00, 0xc0, 0xe0, 0xf0};
        text += static_cast<char>(lead[trailing] | c >> 6 * trailing);
        for (int left = trailing - 1; left >= 0; --left) {
            text += static_cast<char>(0x80U | (c >> 6 * left & 0x3fU));
        }
    }
    return text;
}

/// Text from a certificate, safe to show on a terminal: control characters become "?".
std::string printable(std::string text) {
    for (char& c : text) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) {
            c = '?';
        }
    }
    return text;
}

void line(std::ostream& out, std::string_view label, const std::string& value) {
    out << "  " << std::left << std::setw(9) << label << " " << printable(value) << '\n';
}

std::string time_text(const ASN1T_Time& time) { return std::string(time.text); }

void report_urls(std::ostream& out, std::string_view label, const DistributionPointItem& point) {
    if (!point.distribution_point) {
        return;
    }
    ASN1T_DistributionPointName name;
    const CACMPT_BLOB& encoded = *point.distribution_point;
    decode_value({encoded.data, encoded.length}, name, source_module::chain_base, __LINE__);
    for (const ASN1T_GeneralName& alternative : name.fullName.elements) {
        if (alternative.t == ASN1T_GeneralName::uniformResourceIdentifier) {
            line(out, label,
                 {reinterpret_cast<const char*>(alternative.value.data), alternative.value.length});
        }
    }
}

} // namespace

void report(std::ostream& out, std::string_view source, const CertificateItem& certificate) {
    const WideString subject = name_blob_to_text(certificate.subject_name().encoded);
    const WideString issuer = name_blob_to_text(certificate.issuer_name().encoded);
    const ASN1T_TBSCertificate& tbs = certificate.decoded()->tbsCertificate;
    out << source << ": no check possible; this version reads certificates, and decides nothing\n";
    line(out, "subject", to_utf8(subject));
    line(out, "issuer", to_utf8(issuer));
    line(out, "serial", tbs.serialNumber.text());
    line(out, "valid",
         time_text(tbs.validity.notBefore) + " to " + time_text(tbs.validity.notAfter));
    if (const DistributionPointList* const points = certificate.crl_distribution_points()) {
        for (const DistributionPointItem& point : *points) {
            report_urls(out, "CRL at", point);
        }
    }
    if (const DistributionPointList* const points = certificate.freshest_crl()) {
        for (const DistributionPointItem& point : *points) {
            report_urls(out, "delta at", point);
        }
    }
}

} // namespace norvane
