#include "items/CRLItem.h"

#include "items/KeptValues.h"
#include "values/CompareTimes.h"
#include "values/ObjectIdentifierText.h"
#include "values/ProcessFailure.h"

#include <norvane/wincrypt.h>

namespace norvane {
namespace {

/// The value, or an exception that every read throws again.
template <class Value>
const Value& require_value(const ASN1T_Extension& extension, const char* message) {
    const auto* const value = extension.value_as<Value>();
    if (value == nullptr) {
        throw CAValidateException(message, source_module::chain_base, __LINE__);
    }
    return *value;
}

} // namespace

/// The table of the extension accessors. A critical flag matters to the issuing distribution point
/// alone.
struct CRLItem::Rules {
    static void keep_idp(const ASN1T_Extension& extension,
                         Lazy<WithRaw<ASN1T_IssuingDistributionPoint>>& lazy) {
        lazy.kept.raw = blob_of(extension.extnValue);
        lazy.kept.value =
            &require_value<ASN1T_IssuingDistributionPoint>(extension, "idp extension is malformed");
        if (!extension.critical) {
            lazy.memo = true; // The second read takes the value without complaint.
            throw CAValidateException("idp extension is not critical", source_module::chain_base,
                                      __LINE__);
        }
    }

    static void keep_aki(const ASN1T_Extension& extension,
                         Lazy<WithRaw<ASN1T_AuthorityKeyIdentifier>>& lazy) {
        lazy.kept = {extension.value_as<ASN1T_AuthorityKeyIdentifier>(),
                     blob_of(extension.extnValue)};
    }

    static void keep_extension(const ASN1T_Extension& extension,
                               Lazy<const ASN1T_Extension*>& lazy) {
        lazy.kept = &extension;
    }

    static void keep_number(const ASN1T_Extension& extension,
                            Lazy<std::optional<std::uint32_t>>& lazy) {
        lazy.kept = require_value<ASN1T_CRLNumber>(extension, "CRL number is malformed").value;
    }

    static void keep_kind(const ASN1T_Extension& extension, Lazy<CrlKind>& lazy) {
        int kind = -1;
        DWORD size = sizeof kind;
        const BOOL decoded = platform_answer(
            [&] {
                return CryptDecodeObject(X509_ASN_ENCODING | PKCS_7_ASN_ENCODING, X509_ENUMERATED,
                                         extension.extnValue.data, extension.extnValue.length, 0,
                                         &kind, &size);
            },
            source_module::chain_base, __LINE__);
        lazy.kept.value = decoded && (kind == 0 || kind == 1) ? kind : -1;
    }

    // clang-format off
    static constexpr ExtensionRule<WithRaw<ASN1T_IssuingDistributionPoint>>
        issuing_distribution_point {"2.5.29.28",             MemoSet::on_entry, keep_idp};
    static constexpr ExtensionRule<std::optional<DistributionPointList>>
        freshest_crl               {"2.5.29.46",             MemoSet::on_entry, keep_distribution_points};
    static constexpr ExtensionRule<WithRaw<ASN1T_AuthorityKeyIdentifier>>
        authority_key_identifier   {"2.5.29.35",             MemoSet::on_entry, keep_aki};
    static constexpr ExtensionRule<const ASN1T_Extension*>
        ca_version                 {"1.3.6.1.4.1.311.21.1",  MemoSet::on_exit,  keep_extension};
    static constexpr ExtensionRule<std::optional<std::uint32_t>>
        crl_number                 {"2.5.29.20",             MemoSet::on_entry, keep_number},
        delta_crl_indicator        {"2.5.29.27",             MemoSet::on_entry, keep_number};
    static constexpr ExtensionRule<CrlKind>
        crl_kind                   {"1.2.643.2.2.49.1",      MemoSet::on_entry, keep_kind};
    // clang-format on
};

CRLItem& CRLItem::operator=(const CRLItem& other) {
    copy_from(other);
    return *this;
}

void CRLItem::copy_from(const CRLItem& other) {
    if (this == &other) {
        return;
    }
    clear();
    source_ = other.source_.copy_encoded();
    issuer_ = other.issuer_;
    authority_key_id_ = other.authority_key_id_;
    authority_cert_serial_ = other.authority_cert_serial_;
}

const CACMPT_CERT_NAME& CRLItem::issuer_name() const {
    if (!issuer_) {
        issuer_ = make_cert_name(source_.tree().tbsCertList.issuer);
    }
    return *issuer_;
}

const ASN1T_Extensions* CRLItem::extensions() const {
    const ASN1T_TBSCertList& tbs = source_.tree().tbsCertList;
    return tbs.m.crlExtensionsPresent ? &tbs.crlExtensions : nullptr;
}

const ASN1T_IssuingDistributionPoint* CRLItem::issuing_distribution_point() const {
    return look_up(*this, issuing_distribution_point_, Rules::issuing_distribution_point).value;
}

const CACMPT_BLOB& CRLItem::idp_raw() const {
    return look_up(*this, issuing_distribution_point_, Rules::issuing_distribution_point).raw;
}

const DistributionPointList* CRLItem::freshest_crl() const {
    return pointer_to(look_up(*this, freshest_crl_, Rules::freshest_crl));
}

const ASN1T_AuthorityKeyIdentifier* CRLItem::authority_key_identifier() const {
    return look_up(*this, authority_key_identifier_, Rules::authority_key_identifier).value;
}

const CACMPT_BLOB& CRLItem::aki_raw() const {
    return look_up(*this, authority_key_identifier_, Rules::authority_key_identifier).raw;
}

const ASN1T_Extension* CRLItem::ca_version() const {
    return look_up(*this, ca_version_, Rules::ca_version);
}

std::optional<std::uint32_t> CRLItem::crl_number() const {
    return look_up(*this, crl_number_, Rules::crl_number);
}

std::optional<std::uint32_t> CRLItem::delta_crl_indicator() const {
    return look_up(*this, delta_crl_indicator_, Rules::delta_crl_indicator);
}

std::int32_t CRLItem::crl_kind() const { return look_up(*this, crl_kind_, Rules::crl_kind).value; }

const CACMPT_BLOB& CRLItem::authority_key_id() const {
    if (!authority_key_id_) {
        authority_key_id_ = key_identifier_of(authority_key_identifier());
    }
    return *authority_key_id_;
}

const std::string& CRLItem::authority_cert_serial() const {
    if (!authority_cert_serial_) {
        authority_cert_serial_ = cert_serial_of(authority_key_identifier());
    }
    return *authority_cert_serial_;
}

std::uint8_t CRLItem::idp_only_some_reasons() const {
    const ASN1T_IssuingDistributionPoint* const idp = issuing_distribution_point();
    return idp != nullptr && idp->m.onlySomeReasonsPresent ? idp->onlySomeReasons.first_octet()
                                                           : all_reasons;
}

CACMPT_BLOB CRLItem::idp_distribution_point_name() const {
    const ASN1T_IssuingDistributionPoint* const idp = issuing_distribution_point();
    if (idp == nullptr || !idp->m.distributionPointPresent) {
        return {};
    }
    ASN1T_DistributionPointName name = idp->distributionPoint;
    return encode_value(name, source_module::chain_base, __LINE__);
}

std::uint32_t CRLItem::find_entry_reason(std::string_view serial_text) const {
    const ASN1T_RevokedCertificates& entries = source_.tree().tbsCertList.revokedCertificates;
    // Every encoded integer has one text and every such text one encoding, so comparing octets is
    // comparing texts, without making a text for each entry.
    const auto serial = ASN1TInteger::parse(serial_text);
    if (!serial) {
        return entry_not_found;
    }
    const ByteView wanted{serial->data(), static_cast<std::uint32_t>(serial->size())};
    const auto entry = entries.find([wanted](ByteView serial_number) {
        // The last octet alone tells most numbers apart.
        return serial_number.end()[-1] == wanted.end()[-1] && serial_number == wanted;
    });
    return entry == entries.end() ? entry_not_found : entry_reason(*entry);
}

std::uint32_t entry_reason(const ASN1T_RevokedCertificate& entry) {
    const ASN1OBJID reason_code = str_to_oid("2.5.29.21");
    for (const ASN1T_Extension extension : entry.crlEntryExtensions) {
        if (extension.extnID == reason_code) {
            const auto* const reason = std::get_if<ASN1T_CRLReason>(&extension.value);
            return reason == nullptr ? 0 : static_cast<std::uint32_t>(reason->value);
        }
    }
    return 0;
}

bool crl_time_less(const CRLItem* a, const CRLItem* b) {
    const auto this_update = [](const CRLItem* item) {
        static_cast<void>(item->encoded());
        return item->decoded()->tbsCertList.thisUpdate;
    };
    return compare_times(this_update(a), this_update(b)) > 0;
}

} // namespace norvane
