// Decoded structures as text, for comparing two of them field by field.
#pragma once

#include "asn1/ControlClass.h"

#include <stdexcept>
#include <string>
#include <string_view>

namespace norvane::testing {

// Writes the fields of a structure, each leaf on a line of its own, octets behind their count.
// Throws std::logic_error if a list has another length than its count.
class TreeText {
  public:
    std::string text;

    void put(const ASN1T_Certificate& v) {
        put_all(v.tbsCertificate, v.signatureAlgorithm, v.signature);
    }
    void put(const ASN1T_TBSCertificate& v) {
        put_all(v.m.versionPresent, v.version, v.serialNumber, v.signature, v.issuer,
                v.validity.notBefore, v.validity.notAfter, v.subject,
                v.subjectPublicKeyInfo.algorithm, v.subjectPublicKeyInfo.subjectPublicKey,
                v.m.issuerUniqueIDPresent, v.issuerUniqueID, v.m.subjectUniqueIDPresent,
                v.subjectUniqueID, v.m.extensionsPresent, v.extensions);
    }
    void put(const ASN1T_CertificateList& v) {
        put_all(v.tbsCertList, v.signatureAlgorithm, v.signature);
    }
    void put(const ASN1T_TBSCertList& v) {
        put_all(v.m.versionPresent, v.version, v.signature, v.issuer, v.thisUpdate,
                v.m.nextUpdatePresent, v.nextUpdate, v.m.revokedCertificatesPresent,
                v.revokedCertificates, v.m.crlExtensionsPresent, v.crlExtensions);
    }
    void put(const ASN1T_RevokedCertificates& v) { put_list(v); }
    void put(const ASN1T_RevokedCertificate& v) {
        put_all(v.userCertificate, v.revocationDate, v.m.crlEntryExtensionsPresent);
        for (const ASN1T_Extension& extension : v.crlEntryExtensions) {
            put(extension);
        }
    }
    void put(const ASN1T_Extension& v) {
        put_all(v.extnID, v.critical, v.extnValue, v.value.index());
        std::visit([this](const auto& decoded) { put_value(decoded); }, v.value);
    }
    void put(const ASN1T_Name& v) { put_all(v.t, v.rdnSequence); }
    void put(const ASN1T_AttributeTypeAndValue& v) {
        put_all(v.type, v.rawValue, v.valueDecoded, v.value.t, v.value.text);
    }
    void put(const ASN1T_GeneralName& v) {
        put(v.t);
        v.name == nullptr ? put(v.value) : put(*v.name);
    }
    template <class T>
    requires requires(const T& v) { v.elements; }
    void put(const T& v) { put_list(v.elements); }
    void put(const ASN1T_DistributionPointName& v) {
        put_all(v.t, v.fullName, v.nameRelativeToCRLIssuer);
    }
    void put(const ASN1T_AccessDescription& v) { put_all(v.accessMethod, v.accessLocation); }
    void put(const ASN1T_SubjectKeyIdentifier& v) { put(v.octets); }
    void put(const ASN1T_KeyUsage& v) { put(v.bits); }
    void put(const ASN1T_BasicConstraints& v) {
        put_all(v.cA, v.m.pathLenConstraintPresent, v.pathLenConstraint);
    }
    void put(const ASN1T_CRLNumber& v) { put(v.value); }
    void put(const ASN1T_CRLReason& v) { put(v.value); }
    void put(const ASN1T_DistributionPoint& v) {
        put_all(v.m.distributionPointPresent, v.distributionPoint, v.m.reasonsPresent, v.reasons,
                v.m.cRLIssuerPresent, v.cRLIssuer);
    }
    void put(const ASN1T_IssuingDistributionPoint& v) {
        put_all(v.m.distributionPointPresent, v.distributionPoint, v.onlyContainsUserCerts,
                v.onlyContainsCACerts, v.m.onlySomeReasonsPresent, v.onlySomeReasons, v.indirectCRL,
                v.onlyContainsAttributeCerts);
    }
    void put(const ASN1T_AuthorityKeyIdentifier& v) {
        put_all(v.m.keyIdentifierPresent, v.keyIdentifier, v.m.authorityCertIssuerPresent,
                v.authorityCertIssuer, v.m.authorityCertSerialNumberPresent,
                v.authorityCertSerialNumber);
    }
    void put(const ASN1T_AlgorithmIdentifier& v) { put_all(v.algorithm, v.parameters); }
    void put(const ASN1T_Time& v) {
        put(v.t);
        text.append(v.text) += '\n';
    }
    void put(const ASN1TBitStr& v) { put_all(v.numbits, v.octets(), v.first_octet()); }
    void put(const ASN1TInteger& v) { put(v.content()); }
    void put(const ASN1TObjId& v) { put(v.content()); }
    void put(ByteView octets) {
        put(octets.length);
        text.append(octets.begin(), octets.end()) += '\n';
    }
    template <class T>
    void put(const ASN1TSeqOfList<T>& list) {
        put_list(list);
    }
    void put(std::size_t number) { text.append(std::to_string(number)) += '\n'; }
    void put(int number) { text.append(std::to_string(number)) += '\n'; }
    void put(std::uint32_t number) { put(std::size_t{number}); }

  private:
    void put_all(const auto&... fields) { (put(fields), ...); }
    void put_list(const auto& list) {
        std::uint32_t walked = 0;
        for (const auto& element : list) {
            put(element);
            ++walked;
        }
        if (walked != list.count) {
            throw std::logic_error("a list is miscounted");
        }
        put(list.count);
    }
    void put_value(std::monostate) {}
    void put_value(const ASN1T_CRLReason& decoded) { put(decoded); }
    void put_value(const auto* decoded) { put(*decoded); }
};

// Two structures have the same text exactly if all their fields are equal; the encodings that they
// keep are left out, so that forms of BER compare.
template <class T>
[[nodiscard]] std::string tree_text(const T& value) {
    TreeText tree;
    tree.put(value);
    return tree.text;
}

} // namespace norvane::testing
