#include "CrlFacts.h"

#include "Text.h"

#include "asn1/Decode.h"
#include "asn1/Integer.h"
#include "asn1/Tag.h"

#include <algorithm>
#include <array>
#include <span>

namespace norvane {
namespace {

constexpr std::string_view crl_number_oid = "2.5.29.20";
constexpr std::string_view delta_indicator_oid = "2.5.29.27";

/// RFC 5280 5.2.3 allows 20. The digits of longer ones take time that grows with the square.
constexpr std::uint32_t max_number_octets = 128;

constexpr std::array<std::string_view, 11> reason_names{
    "unspecified",   "keyCompromise",        "cACompromise",    "affiliationChanged",
    "superseded",    "cessationOfOperation", "certificateHold", "",
    "removeFromCRL", "privilegeWithdrawn",   "aACompromise"};

const CERT_EXTENSION* find_extension(const CRL_INFO& crl, std::string_view oid) noexcept {
    const std::span extensions(crl.rgExtension, crl.cExtension);
    const auto found = std::ranges::find_if(
        extensions, [oid](const CERT_EXTENSION& extension) { return extension.pszObjId == oid; });
    return found == extensions.end() ? nullptr : &*found;
}

} // namespace

std::string_view reason_name(DWORD code) noexcept {
    return code < reason_names.size() ? reason_names.at(code) : std::string_view();
}

std::optional<std::string> crl_number(const CRL_INFO& crl) {
    const CERT_EXTENSION* const extension = find_extension(crl, crl_number_oid);
    if (extension == nullptr) {
        return std::nullopt;
    }
    ASN1CTXT ctxt;
    ByteView number;
    const auto read = [&](Reader& in) { number = in.integer(Tag::integer, "CRLNumber").content(); };
    const ByteView encoded{extension->Value.pbData, extension->Value.cbData};
    if (decode_with(ctxt, encoded, DecodeReport::silent, read) < 0 ||
        number.length > max_number_octets) {
        return std::nullopt;
    }
    return decimal_text(number.data, number.length);
}

bool is_delta(const CRL_INFO& crl) noexcept {
    return find_extension(crl, delta_indicator_oid) != nullptr;
}

} // namespace norvane
