// Decoded structures as text, for comparing two of them field by field.
#pragma once

#include "asn1/ControlClass.h"
#include "asn1/Time.h"

#include <array>
#include <stdexcept>
#include <string>
#include <string_view>

namespace norvane::testing {

// Writes the fields of a structure, each leaf on a line of its own. Every octet that the value
// views is read, those of kept encodings too. Throws std::logic_error if the value contradicts
// itself: a list has another length than its count, say.
class TreeText {
  public:
    std::string text;

    void put(const ASN1T_Certificate& v) {
        put_all(v.tbsCertificate, v.signatureAlgorithm, v.signature);
        read(v.encoding);
    }
    void put(const ASN1T_TBSCertificate& v) {
        put_all(v.m.versionPresent, v.version, v.serialNumber, v.signature, v.issuer,
                v.validity.notBefore, v.validity.notAfter, v.subject,
                v.subjectPublicKeyInfo.algorithm, v.subjectPublicKeyInfo.subjectPublicKey,
                v.m.issuerUniqueIDPresent, v.issuerUniqueID, v.m.subjectUniqueIDPresent,
                v.subjectUniqueID, v.m.extensionsPresent, v.extensions);
        read(v.encoding);
    }
    void put(const ASN1T_CertificateList& v) {
        put_all(v.tbsCertList, v.signatureAlgorithm, v.signature);
        read(v.encoding);
    }
    void put(const ASN1T_TBSCertList& v) {
        put_all(v.m.versionPresent, v.version, v.signature, v.issuer, v.thisUpdate,
                v.m.nextUpdatePresent, v.nextUpdate, v.m.revokedCertificatesPresent,
                v.revokedCertificates, v.m.crlExtensionsPresent, v.crlExtensions);
        read(v.encoding);
    }
    void put(const ASN1T_RevokedCertificates& v) {
        std::uint32_t walked = 0;
        for (const ASN1T_RevokedCertificate& entry : v) {
            put_all(entry.userCertificate, entry.revocationDate, entry.m.crlEntryExtensionsPresent);
            for (const ASN1T_Extension& extension : entry.crlEntryExtensions) {
                put(extension);
            }
            ++walked;
        }
        require(walked == v.count, "entries are miscounted");
        put(v.count);
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
        if (v.name == nullptr) {
            put(v.value);
        } else {
            put(*v.name);
            read(v.value);
        }
    }
    void put(const ASN1T_GeneralNames& v) {
        put(v.elements);
        read(v.content);
    }
    void put(const ASN1T_DistributionPointName& v) {
        put_all(v.t, v.fullName, v.nameRelativeToCRLIssuer);
        read(v.encoding);
    }
    void put(const ASN1T_AuthorityInfoAccessSyntax& v) {
        put(v.elements);
        read(v.encoding);
    }
    void put(const ASN1T_AccessDescription& v) { put_all(v.accessMethod, v.accessLocation); }
    void put(const ASN1T_SubjectKeyIdentifier& v) { put(v.octets); }
    void put(const ASN1T_KeyUsage& v) { put(v.bits); }
    void put(const ASN1T_BasicConstraints& v) {
        put_all(v.cA, v.m.pathLenConstraintPresent, v.pathLenConstraint);
    }
    void put(const ASN1T_CRLNumber& v) { put(v.value); }
    void put(const ASN1T_CRLReason& v) { put(v.value); }
    void put(const ASN1T_CRLDistributionPoints& v) { put(v.elements); }
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
    void put(const ASN1T_ExtKeyUsageSyntax& v) { put(v.elements); }
    void put(const ASN1T_AlgorithmIdentifier& v) { put_all(v.algorithm, v.parameters); }
    void put(const ASN1T_Time& v) {
        put(v.t);
        text.append(v.text) += '\n';
        ASN1BEREncodeBuffer buffer;
        std::string_view bound = v.text;
        if (v.t == ASN1T_Time::utcTime_chosen) {
            put_fields(ASN1CUTCTime(buffer, bound));
        } else if (v.t == ASN1T_Time::generalTime_chosen) {
            put_fields(ASN1CGeneralizedTime(buffer, bound));
        }
    }
    void put(const ASN1TBitStr& v) {
        put_all(v.numbits, v.octets(), v.first_octet());
        for (std::uint32_t i = 0; i < 8; ++i) {
            require(ASN1CBitStr(v).get(i) == ((v.first_octet() >> (7 - i) & 1) != 0),
                    "a bit differs from the first octet");
        }
    }
    void put(const ASN1TInteger& v) {
        text.append(v.text()) += '\n';
        require(v.content().empty() || ASN1TInteger::parse(v.text()) ==
                                           std::vector(v.content().begin(), v.content().end()),
                "the text of an integer is not that of its octets");
    }
    void put(const ASN1TObjId& v) {
        put(v.content());
        if (ASN1OBJID arcs; v.get_arcs(arcs)) {
            std::array<char, 11 * ASN1OBJID::max_arcs> dotted{};
            require((rtOidToStr(arcs, dotted.data(), dotted.size()) == 0) == (arcs.numids == 0) &&
                        v == arcs,
                    "an identifier differs from its arcs");
            text.append(dotted.data()) += '\n';
        }
    }
    void put(ByteView octets) {
        for (const std::uint8_t octet : octets) {
            text += "0123456789abcdef"[octet >> 4];
            text += "0123456789abcdef"[octet & 0x0f];
        }
        text += '\n';
    }
    template <class T>
    void put(const ASN1TSeqOfList<T>& list) {
        ASN1CSeqOfListIterator<T> iterator = ASN1CSeqOfList<T>(list).iterator();
        std::uint32_t walked = 0;
        for (const T& element : list) {
            require(iterator.next() == &element, "the two walks over a list differ");
            put(element);
            ++walked;
        }
        require(iterator.next() == nullptr && walked == list.count, "a list is miscounted");
        put(list.count);
    }
    void put(std::size_t number) { text.append(std::to_string(number)) += '\n'; }
    void put(int number) { text.append(std::to_string(number)) += '\n'; }
    void put(std::uint32_t number) { put(std::size_t{number}); }

  private:
    static void require(bool consistent, const char* fault) {
        if (!consistent) {
            throw std::logic_error(fault);
        }
    }
    void put_all(const auto&... fields) { (put(fields), ...); }
    void put_fields(ASN1CTime&& time) {
        put_all(time.getYear(), time.getMonth(), time.getDay(), time.getHour(), time.getMinute(),
                time.getSecond());
    }
    void put_value(std::monostate) {}
    void put_value(const ASN1T_CRLReason& decoded) { put(decoded); }
    void put_value(const auto* decoded) { put(*decoded); }

    // Reads octets that take no part in the comparison, so that a sanitizer sees a stray one.
    static void read(ByteView octets) {
        volatile unsigned sum = 0;
        for (const std::uint8_t octet : octets) {
            sum = sum + octet;
        }
    }
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
