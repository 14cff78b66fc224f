#pragma once

#include "asn1/Certificate.h"
#include "items/CertName.h"
#include "items/DistributionPoint.h"
#include "items/EncodedTree.h"
#include "items/LazyExtension.h"
#include "values/ASN1Blob.h"

#include <norvane/wincrypt.h>

#include <cstdint>
#include <optional>
#include <string>

namespace norvane {

/// One X.509 certificate: its DER bytes, by which it is identified, and all else on demand. Nothing
/// is decoded before somebody asks, and each derived value is made once and kept.
///
/// The accessors are const because they only add what follows from the bytes; they are not
/// guarded, so an item belongs to one thread. What they return lives as long as the item. Moving an
/// item leaves its bytes and the decoded structure in place, while names, blobs and lists move with
/// it. Each throws Asn1Exception if the certificate does not decode; what is written beside the
/// accessors of extensions tells what a second read does then.
class CertificateItem {
  public:
    /// An item without content: encoded() throws CAException "No source for fill_encoded".
    CertificateItem() = default;
    /// Takes the bytes as they are; a malformed certificate is not noticed here.
    explicit CertificateItem(CACMPT_BLOB encoded_blob) : source_(std::move(encoded_blob)) {}

    /// Copies the bytes, the names, the key identifiers and whether the certificate is self-signed,
    /// as far as they are filled. The copy decodes anew for everything else.
    CertificateItem(const CertificateItem& other) { copy_from(other); }
    CertificateItem& operator=(const CertificateItem& other);
    CertificateItem(CertificateItem&&) noexcept = default;
    CertificateItem& operator=(CertificateItem&&) noexcept = default;
    virtual ~CertificateItem() = default;

    void copy_from(const CertificateItem& other);
    /// Makes this an item without content.
    void clear() { *this = CertificateItem(); }

    [[nodiscard]] const CACMPT_BLOB& encoded() const { return source_.encoded(); }
    [[nodiscard]] const ASN1T_Certificate* decoded() const { return source_.decoded(); }
    [[nodiscard]] bool is_decoded() const { return source_.is_decoded(); }

    [[nodiscard]] const CACMPT_CERT_NAME& issuer_name() const;
    [[nodiscard]] const CACMPT_CERT_NAME& subject_name() const;

    /// Whether the certificate's signature verifies with its own key; the names do not matter.
    [[nodiscard]] bool is_self_signed() const;

    /// Whether the certificate's signature verifies with this key. The signature is checked over
    /// the encoding of the decoded TBSCertificate.
    [[nodiscard]] bool verify_with_key(const ASN1T_SubjectPublicKeyInfo& key) const;

    // The extensions, RFC 5280 4.2. Null if the extension is absent, and for one whose content is
    // not what its type says. The rows of the table in CertificateItem.cpp tell them apart.

    [[nodiscard]] const DistributionPointList* crl_distribution_points() const;
    [[nodiscard]] const DistributionPointList* freshest_crl() const;
    [[nodiscard]] const ASN1T_AuthorityInfoAccessSyntax* authority_info_access() const;
    [[nodiscard]] const ASN1T_BasicConstraints* basic_constraints() const;
    [[nodiscard]] bool basic_constraints_critical() const;
    [[nodiscard]] const ASN1T_KeyUsage* key_usage() const;
    [[nodiscard]] const ASN1T_ExtKeyUsageSyntax* ext_key_usage() const;
    [[nodiscard]] const ASN1T_AuthorityKeyIdentifier* authority_key_identifier() const;
    /// Empty if absent.
    [[nodiscard]] const CACMPT_BLOB& subject_key_identifier() const;

    /// keyIdentifier of the authority key identifier, empty if absent.
    [[nodiscard]] const CACMPT_BLOB& authority_key_id() const;
    /// The text of authorityCertSerialNumber, empty if absent.
    [[nodiscard]] const std::string& authority_cert_serial() const;

    /// Whether the extended key usage has all of the requested purposes, or with
    /// USAGE_MATCH_TYPE_OR any of them; false without the extension, whatever is requested. Throws
    /// Asn1DecodeException if a purpose compared has a text of 64 characters or more.
    [[nodiscard]] bool has_ext_key_usages(const CERT_USAGE_MATCH& usage_match) const;

    /// The certificate's extensions, null if it has none.
    [[nodiscard]] const ASN1T_Extensions* extensions() const;

    /// The place in the order in which a cache was given its items; 0 outside a cache.
    [[nodiscard]] std::uint32_t discovery() const { return discovery_; }
    void set_discovery(std::uint32_t place) { discovery_ = place; }

  private:
    enum class SelfSigned : std::int32_t { no = 0, yes = 1, unknown = 2 };
    struct BasicConstraints {
        const ASN1T_BasicConstraints* value = nullptr;
        bool critical = false;
    };
    struct Rules;

    EncodedTree<ASN1T_Certificate> source_;
    mutable std::optional<CACMPT_CERT_NAME> issuer_;
    mutable std::optional<CACMPT_CERT_NAME> subject_;
    mutable SelfSigned self_signed_state_ = SelfSigned::unknown;
    mutable Lazy<std::optional<DistributionPointList>> crl_distribution_points_;
    mutable Lazy<BasicConstraints> basic_constraints_;
    mutable Lazy<const ASN1T_KeyUsage*> key_usage_;
    mutable Lazy<const ASN1T_ExtKeyUsageSyntax*> ext_key_usage_;
    mutable std::optional<CACMPT_BLOB> authority_key_id_;
    mutable std::optional<std::string> authority_cert_serial_;
    mutable Lazy<const ASN1T_AuthorityKeyIdentifier*> authority_key_identifier_;
    mutable std::optional<CACMPT_BLOB> subject_key_identifier_;
    mutable Lazy<const ASN1T_AuthorityInfoAccessSyntax*> authority_info_access_;
    mutable Lazy<std::optional<DistributionPointList>> freshest_crl_;
    std::uint32_t discovery_ = 0;
};

} // namespace norvane
