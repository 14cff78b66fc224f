#include "items/CertificateItem.h"

#include "items/KeptValues.h"
#include "values/ObjectIdentifierText.h"

#include <array>
#include <string_view>

namespace norvane {

/// The table of the extension accessors. A critical flag matters to none of them but
/// basicConstraints, which keeps it for the caller.
struct CertificateItem::Rules {
    static void keep_basic_constraints(const ASN1T_Extension& extension,
                                       Lazy<BasicConstraints>& lazy) {
        lazy.kept = {extension.value_as<ASN1T_BasicConstraints>(), extension.critical};
    }

    // clang-format off
    static constexpr ExtensionRule<std::optional<DistributionPointList>>
        crl_distribution_points  {"2.5.29.31",         MemoSet::on_entry,           keep_distribution_points},
        freshest_crl             {"2.5.29.46",         MemoSet::on_entry,           keep_distribution_points};
    static constexpr ExtensionRule<const ASN1T_AuthorityInfoAccessSyntax*>
        authority_info_access    {"1.3.6.1.5.5.7.1.1", MemoSet::without_extensions, keep_value};
    static constexpr ExtensionRule<BasicConstraints>
        basic_constraints        {"2.5.29.19",         MemoSet::on_exit,            keep_basic_constraints};
    static constexpr ExtensionRule<const ASN1T_KeyUsage*>
        key_usage                {"2.5.29.15",         MemoSet::on_exit,            keep_value};
    static constexpr ExtensionRule<const ASN1T_ExtKeyUsageSyntax*>
        ext_key_usage            {"2.5.29.37",         MemoSet::on_exit,            keep_value};
    static constexpr ExtensionRule<const ASN1T_AuthorityKeyIdentifier*>
        authority_key_identifier {"2.5.29.35",         MemoSet::on_entry,           keep_value};
    static constexpr const char* subject_key_identifier = "2.5.29.14"; // Filled while empty.
    // clang-format on
};

CertificateItem& CertificateItem::operator=(const CertificateItem& other) {
    copy_from(other);
    return *this;
}

void CertificateItem::copy_from(const CertificateItem& other) {
    if (this == &other) {
        return;
    }
    clear();
    source_ = other.source_.copy_encoded();
    issuer_ = other.issuer_;
    subject_ = other.subject_;
    self_signed_state_ = other.self_signed_state_;
    authority_key_id_ = other.authority_key_id_;
    authority_cert_serial_ = other.authority_cert_serial_;
    subject_key_identifier_ = other.subject_key_identifier_;
}

const CACMPT_CERT_NAME& CertificateItem::issuer_name() const {
    if (!issuer_) {
        issuer_ = make_cert_name(source_.tree().tbsCertificate.issuer);
    }
    return *issuer_;
}

const CACMPT_CERT_NAME& CertificateItem::subject_name() const {
    if (!subject_) {
        subject_ = make_cert_name(source_.tree().tbsCertificate.subject);
    }
    return *subject_;
}

const ASN1T_Extensions* CertificateItem::extensions() const {
    const ASN1T_TBSCertificate& tbs = source_.tree().tbsCertificate;
    return tbs.m.extensionsPresent ? &tbs.extensions : nullptr;
}

const DistributionPointList* CertificateItem::crl_distribution_points() const {
    return pointer_to(look_up(*this, crl_distribution_points_, Rules::crl_distribution_points));
}

const DistributionPointList* CertificateItem::freshest_crl() const {
    return pointer_to(look_up(*this, freshest_crl_, Rules::freshest_crl));
}

const ASN1T_AuthorityInfoAccessSyntax* CertificateItem::authority_info_access() const {
    return look_up(*this, authority_info_access_, Rules::authority_info_access);
}

const ASN1T_BasicConstraints* CertificateItem::basic_constraints() const {
    return look_up(*this, basic_constraints_, Rules::basic_constraints).value;
}

bool CertificateItem::basic_constraints_critical() const {
    return look_up(*this, basic_constraints_, Rules::basic_constraints).critical;
}

const ASN1T_KeyUsage* CertificateItem::key_usage() const {
    return look_up(*this, key_usage_, Rules::key_usage);
}

const ASN1T_ExtKeyUsageSyntax* CertificateItem::ext_key_usage() const {
    return look_up(*this, ext_key_usage_, Rules::ext_key_usage);
}

const ASN1T_AuthorityKeyIdentifier* CertificateItem::authority_key_identifier() const {
    return look_up(*this, authority_key_identifier_, Rules::authority_key_identifier);
}

const CACMPT_BLOB& CertificateItem::subject_key_identifier() const {
    if (!subject_key_identifier_) {
        const ASN1T_Extensions* const list = extensions();
        const ASN1T_Extension* const extension =
            list == nullptr ? nullptr : find_extension(*list, Rules::subject_key_identifier);
        const auto* const value =
            extension == nullptr ? nullptr : extension->value_as<ASN1T_SubjectKeyIdentifier>();
        subject_key_identifier_ = value == nullptr ? CACMPT_BLOB() : blob_of(value->octets);
    }
    return *subject_key_identifier_;
}

const CACMPT_BLOB& CertificateItem::authority_key_id() const {
    if (!authority_key_id_) {
        authority_key_id_ = key_identifier_of(authority_key_identifier());
    }
    return *authority_key_id_;
}

const std::string& CertificateItem::authority_cert_serial() const {
    if (!authority_cert_serial_) {
        authority_cert_serial_ = cert_serial_of(authority_key_identifier());
    }
    return *authority_cert_serial_;
}

bool CertificateItem::has_ext_key_usages(const CERT_USAGE_MATCH& usage_match) const {
    const ASN1T_ExtKeyUsageSyntax* const usages = ext_key_usage();
    if (usages == nullptr) {
        return false;
    }
    const auto has = [usages](std::string_view wanted) {
        for (const ASN1TObjId& usage : usages->elements) {
            std::array<char, 64> text{};
            oid_to_text(text.data(), usage, text.size(), "");
            if (wanted == text.data()) {
                return true;
            }
        }
        return false;
    };
    const bool all_needed = usage_match.dwType == USAGE_MATCH_TYPE_AND;
    for (DWORD i = 0; i < usage_match.Usage.cUsageIdentifier; ++i) {
        const bool found = has(usage_match.Usage.rgpszUsageIdentifier[i]);
        if (found != all_needed) {
            return found;
        }
    }
    return all_needed;
}

} // namespace norvane
