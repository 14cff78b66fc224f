#pragma once

#include "asn1/CertificateList.h"
#include "items/CertName.h"
#include "items/DistributionPoint.h"
#include "items/EncodedTree.h"
#include "items/LazyExtension.h"
#include "values/ASN1Blob.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace norvane {

/// What a look-up gives for a certificate that the CRL does not list.
inline constexpr std::uint32_t entry_not_found = 65535;

/// All reasons of RFC 5280 4.2.1.13 but "unused" and aACompromise, one bit each.
inline constexpr std::uint8_t all_reasons = 127;

/// One X.509 CRL, made on the plan of CertificateItem: its DER bytes, by which it is identified,
/// and all else on demand.
class CRLItem {
  public:
    CRLItem() = default;
    /// Takes the bytes as they are; a malformed CRL is not noticed here.
    explicit CRLItem(CACMPT_BLOB encoded_blob) : source_(std::move(encoded_blob)) {}

    /// Copies the bytes, the issuer, authority_key_id and authority_cert_serial, as far as they
    /// are filled. The copy decodes anew for everything else.
    CRLItem(const CRLItem& other) { copy_from(other); }
    CRLItem& operator=(const CRLItem& other);
    CRLItem(CRLItem&&) noexcept = default;
    CRLItem& operator=(CRLItem&&) noexcept = default;
    virtual ~CRLItem() = default;

    void copy_from(const CRLItem& other);
    void clear() { *this = CRLItem(); }

    [[nodiscard]] const CACMPT_BLOB& encoded() const { return source_.encoded(); }
    [[nodiscard]] const ASN1T_CertificateList* decoded() const { return source_.decoded(); }
    [[nodiscard]] bool is_decoded() const { return source_.is_decoded(); }

    [[nodiscard]] const CACMPT_CERT_NAME& issuer_name() const;

    /// Whether the CRL's signature verifies with this key. The signature is checked over the
    /// encoding of the decoded TBSCertList.
    [[nodiscard]] bool verify_with_key(const ASN1T_SubjectPublicKeyInfo& key) const;

    // The extensions, RFC 5280 5.2. The rows of the table in CRLItem.cpp tell them apart.

    /// Null if absent. Throws CAValidateException "idp extension is not critical" at the first
    /// read, and at that one only, of an extension that is not critical; and at every read of one
    /// whose content is not what its type says, so that it never passes for absent.
    [[nodiscard]] const ASN1T_IssuingDistributionPoint* issuing_distribution_point() const;
    /// The content of the issuing distribution point, empty if it is absent. Reads it, and throws,
    /// as issuing_distribution_point() does.
    [[nodiscard]] const CACMPT_BLOB& idp_raw() const;
    [[nodiscard]] const DistributionPointList* freshest_crl() const;
    [[nodiscard]] const ASN1T_AuthorityKeyIdentifier* authority_key_identifier() const;
    /// The content of the authority key identifier, empty if it is absent.
    [[nodiscard]] const CACMPT_BLOB& aki_raw() const;
    /// The extension 1.3.6.1.4.1.311.21.1 itself, not its value.
    [[nodiscard]] const ASN1T_Extension* ca_version() const;
    /// Nothing if absent, 0xFFFFFFFF for a number that needs more than 32 bits. Throws
    /// CAValidateException at every read if the content is no number from 0 up.
    [[nodiscard]] std::optional<std::uint32_t> crl_number() const;
    [[nodiscard]] std::optional<std::uint32_t> delta_crl_indicator() const;
    /// The ENUMERATED of 1.2.643.2.2.49.1 if that is 0 or 1; -1 for any other and if absent.
    [[nodiscard]] std::int32_t crl_kind() const;

    /// keyIdentifier of the authority key identifier, empty if absent.
    [[nodiscard]] const CACMPT_BLOB& authority_key_id() const;
    /// The text of authorityCertSerialNumber, empty if absent.
    [[nodiscard]] const std::string& authority_cert_serial() const;

    /// The first eight bits of onlySomeReasons; all_reasons without the extension or the field.
    [[nodiscard]] std::uint8_t idp_only_some_reasons() const;
    /// The encoded DistributionPointName of the issuing distribution point, empty without. Made
    /// anew at each call.
    [[nodiscard]] CACMPT_BLOB idp_distribution_point_name() const;

    /// The reason of the first entry whose serial number has this text, entry_not_found if none
    /// has. The texts must be the same to the letter; no numbers are compared. Linear in the
    /// number of entries; builds none.
    [[nodiscard]] std::uint32_t find_entry_reason(std::string_view serial_text) const;

    /// The CRL's extensions, null if it has none.
    [[nodiscard]] const ASN1T_Extensions* extensions() const;

    /// The place in the order in which a cache was given its items; 0 outside a cache.
    [[nodiscard]] std::uint32_t discovery() const { return discovery_; }
    void set_discovery(std::uint32_t place) { discovery_ = place; }

  private:
    /// A decoded value, and the extension's content that it comes from.
    template <class Value>
    struct WithRaw {
        const Value* value = nullptr;
        CACMPT_BLOB raw;
    };
    struct CrlKind {
        std::int32_t value = -1;
    };
    struct Rules;

    EncodedTree<ASN1T_CertificateList> source_;
    mutable std::optional<CACMPT_CERT_NAME> issuer_;
    mutable Lazy<WithRaw<ASN1T_IssuingDistributionPoint>> issuing_distribution_point_;
    mutable std::optional<CACMPT_BLOB> authority_key_id_;
    mutable std::optional<std::string> authority_cert_serial_;
    mutable Lazy<WithRaw<ASN1T_AuthorityKeyIdentifier>> authority_key_identifier_;
    mutable Lazy<const ASN1T_Extension*> ca_version_;
    mutable Lazy<CrlKind> crl_kind_;
    mutable Lazy<std::optional<DistributionPointList>> freshest_crl_;
    mutable Lazy<std::optional<std::uint32_t>> crl_number_;
    mutable Lazy<std::optional<std::uint32_t>> delta_crl_indicator_;
    std::uint32_t discovery_ = 0;
};

/// The reason code of a revoked entry (2.5.29.21), 0 (unspecified) if it has none that decodes.
[[nodiscard]] std::uint32_t entry_reason(const ASN1T_RevokedCertificate& entry);

/// Whether `a` was issued later than `b`, by thisUpdate. Throws Asn1Exception if a time cannot be
/// read or a CRL does not decode.
[[nodiscard]] bool crl_time_less(const CRLItem* a, const CRLItem* b);

} // namespace norvane
