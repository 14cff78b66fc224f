#pragma once

#include "asn1/ByteView.h"
#include "store/StoreFindParam.h"
#include "values/ASN1Blob.h"

#include <norvane/wincrypt.h>

namespace norvane {

// Names are equal if their canonical forms are, which are made anew for each comparison; so a
// predicate may be given a name or its canonical form. Anything else is equal if its bytes are.

/// Certificates with this subject key identifier, as the platform finds them.
class CertFindByKeyIdentifier : public StoreFindParam<_CERT_CONTEXT> {
  public:
    explicit CertFindByKeyIdentifier(ByteView key_identifier);

  private:
    CRYPT_HASH_BLOB identifier_;
};

/// Certificates with this subject, unless it is empty, and this serial number, unless it is empty.
class CertFindBySubjectAndSerial : public StoreFindParam<_CERT_CONTEXT> {
  public:
    [[nodiscard]] bool match(const _CERT_CONTEXT* certificate) override;

    ByteView name;
    CACMPT_BLOB serial; ///< Least significant byte first.
};

/// Certificates whose issuer, as name_blob_to_text gives it, contains a text, case counting; and
/// with this serial number, unless it is empty. With neither, all certificates.
class CertFindByIssuerSubStrAndSerial : public StoreFindParam<_CERT_CONTEXT> {
  public:
    [[nodiscard]] bool match(const _CERT_CONTEXT* certificate) override;

    LPCWSTR substring = nullptr;
    const CACMPT_BLOB* serial = nullptr; ///< Least significant byte first; null counts as empty.
};

/// CRLs of this issuer; all if it is empty.
class CrlFindByIssuer : public StoreFindParam<_CRL_CONTEXT> {
  public:
    explicit CrlFindByIssuer(const CACMPT_BLOB& issuer_name) : issuer_(&issuer_name) {}

    [[nodiscard]] bool match(const _CRL_CONTEXT* crl) override;

  private:
    const CACMPT_BLOB* issuer_;
};

/// CRLs of this issuer, if it is not empty, that were signed with this key, if it is not empty. A
/// CRL whose authority key identifier is absent or does not decode may be signed with any.
class CrlFindByIssuerKeyId : public StoreFindParam<_CRL_CONTEXT> {
  public:
    CrlFindByIssuerKeyId(const CACMPT_BLOB& issuer_name, const CACMPT_BLOB& key_identifier)
        : issuer_(&issuer_name), key_id_(&key_identifier) {}

    [[nodiscard]] bool match(const _CRL_CONTEXT* crl) override;

  private:
    const CACMPT_BLOB* issuer_;
    const CACMPT_BLOB* key_id_;
};

} // namespace norvane
