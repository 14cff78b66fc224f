#include "platform/store/SharedCertificate.h"

#include "asn1/Decode.h"

#include <algorithm>
#include <array>
#include <functional>
#include <span>
#include <utility>

namespace norvane {
namespace {

/// Whether the identifier can be written as text of a length that whoever verifies signatures
/// takes. No algorithm that exists has a longer one, or arcs of more than 32 bits.
bool can_be_looked_up(const ASN1T_AlgorithmIdentifier& algorithm) {
    constexpr std::size_t longest_text = 255;
    ASN1OBJID arcs;
    std::array<char, longest_text + 1> text{};
    return algorithm.algorithm.get_arcs(arcs) && rtOidToStr(arcs, text.data(), text.size()) != 0;
}

} // namespace

void visit_shared_certificate_locks(LockVisitor visit) {
    SharedObjects<SharedCertificate>::instance().visit_locks(visit);
}

std::variant<Ref<SharedCertificate>, ObjectFault> SharedCertificate::make(EncodedBytes bytes,
                                                                          std::uint64_t hash) {
    auto object = Ref<SharedCertificate>::adopt(new SharedCertificate(std::move(bytes), hash));
    auto ctxt = std::make_unique<ASN1CTXT>();
    ASN1T_Certificate tree;
    if (decode_element(*ctxt, object->encoded(), tree) < 0) {
        return object_fault(*ctxt);
    }
    if (!can_be_looked_up(tree.signatureAlgorithm) ||
        !can_be_looked_up(tree.tbsCertificate.subjectPublicKeyInfo.algorithm)) {
        return ObjectFault{CRYPT_E_ASN1_CORRUPT, "Certificate names an algorithm that none can be"};
    }
    if (!object->lay_out(tree.tbsCertificate)) {
        return ObjectFault{CRYPT_E_ASN1_CORRUPT,
                           "Certificate.tbsCertificate.validity holds what is not a time"};
    }
    if (!object->shows_only_own_bytes()) {
        object->ctxt_ = std::move(ctxt);
    }
    return object;
}

bool SharedCertificate::lay_out(const ASN1T_TBSCertificate& tbs) {
    const auto not_before = to_file_time(tbs.validity.notBefore);
    const auto not_after = to_file_time(tbs.validity.notAfter);
    if (!not_before || !not_after) {
        return false;
    }
    fields_.reserve_extensions(tbs.extensions);
    fields_.reserve(tbs.serialNumber.content());
    fields_.reserve(tbs.signature.algorithm);
    fields_.reserve(tbs.issuer);
    fields_.reserve(tbs.subject);
    fields_.reserve(tbs.subjectPublicKeyInfo.algorithm.algorithm);
    fields_.allocate();

    fields_.extensions(tbs.extensions, info_.cExtension, info_.rgExtension);
    info_.dwVersion = static_cast<DWORD>(tbs.version);
    info_.SerialNumber = fields_.little_endian(tbs.serialNumber.content());
    info_.SignatureAlgorithm = fields_.algorithm(tbs.signature);
    info_.Issuer = fields_.encoding(tbs.issuer);
    info_.NotBefore = *not_before;
    info_.NotAfter = *not_after;
    info_.Subject = fields_.encoding(tbs.subject);
    info_.SubjectPublicKeyInfo = {
        .Algorithm = fields_.algorithm(tbs.subjectPublicKeyInfo.algorithm),
        .PublicKey = to_bit_blob(tbs.subjectPublicKeyInfo.subjectPublicKey)};
    info_.IssuerUniqueId = to_bit_blob(tbs.issuerUniqueID);
    info_.SubjectUniqueId = to_bit_blob(tbs.subjectUniqueID);

    for (const ASN1T_Extension& extension : tbs.extensions) {
        const auto* const identifier = extension.value_as<ASN1T_SubjectKeyIdentifier>();
        if (identifier != nullptr) {
            subject_key_identifier_ = identifier->octets;
            break;
        }
    }
    cell_ = {.context = {.dwCertEncodingType = X509_ASN_ENCODING,
                         .pbCertEncoded = to_blob(encoded()).pbData,
                         .cbCertEncoded = encoded().length,
                         .pCertInfo = &info_,
                         .hCertStore = nullptr},
             .object = this};
    return true;
}

/// Whether nothing views the decoder's memory, which takes strings in segments and all that comes
/// with lengths of BER.
bool SharedCertificate::shows_only_own_bytes() const {
    const auto own = [this](const BYTE* data) {
        return data == nullptr || (std::greater_equal{}(data, encoded().begin()) &&
                                   std::less_equal{}(data, encoded().end()));
    };
    const CRYPT_ALGORITHM_IDENTIFIER& key_algorithm = info_.SubjectPublicKeyInfo.Algorithm;
    return own(info_.SignatureAlgorithm.Parameters.pbData) &&
           own(key_algorithm.Parameters.pbData) &&
           own(info_.SubjectPublicKeyInfo.PublicKey.pbData) && own(info_.IssuerUniqueId.pbData) &&
           own(info_.SubjectUniqueId.pbData) &&
           own(subject_key_identifier_.value_or(ByteView()).data) &&
           std::ranges::all_of(
               std::span(info_.rgExtension, info_.cExtension),
               [&](const CERT_EXTENSION& extension) { return own(extension.Value.pbData); });
}

} // namespace norvane
