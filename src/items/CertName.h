#pragma once

#include "values/ASN1Blob.h"

#include <optional>

namespace norvane {

/// A DER Name, or in a distribution point a DER GeneralNames, with its comparison form, which is
/// made when it is first needed and kept.
class CACMPT_CERT_NAME {
  public:
    CACMPT_CERT_NAME() = default;
    explicit CACMPT_CERT_NAME(CACMPT_BLOB encoded_name) : encoded(std::move(encoded_name)) {}
    CACMPT_CERT_NAME(const CACMPT_CERT_NAME&) = default;
    CACMPT_CERT_NAME(CACMPT_CERT_NAME&&) noexcept = default;
    CACMPT_CERT_NAME& operator=(const CACMPT_CERT_NAME&) = default;
    CACMPT_CERT_NAME& operator=(CACMPT_CERT_NAME&&) noexcept = default;
    virtual ~CACMPT_CERT_NAME() = default;

    /// canonical_name of `encoded`. Throws what that throws, and then keeps nothing.
    [[nodiscard]] const CACMPT_BLOB& canonical() const;

    CACMPT_BLOB encoded;

  private:
    mutable std::optional<CACMPT_BLOB> canonical_;
};

/// The comparison form of an encoded Name: the Name again, encoded with every PrintableString of
/// the attributes in the table of CertName.cpp in lower case, without spaces at its ends and with
/// single ones inside. All else stays: other string types, other attributes, the order of RDNs and
/// of the attributes in them. Two names are equal if their forms are equal byte for byte, which is
/// less than RFC 5280 7.1 would have equal. The form of a form is itself.
///
/// Throws Asn1Exception if the bytes are no Name.
[[nodiscard]] CACMPT_BLOB canonical_name(const CACMPT_BLOB& encoded_name);

/// Whether two names are equal in their canonical forms.
[[nodiscard]] bool names_equal(const CACMPT_CERT_NAME& a, const CACMPT_CERT_NAME& b);

} // namespace norvane
