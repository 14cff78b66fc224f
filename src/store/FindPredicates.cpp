#include "store/FindPredicates.h"

#include "items/RememberedNames.h"
#include "store/StoreHandle.h"
#include "values/NameText.h"
#include "values/ProcessFailure.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <vector>

namespace norvane {
namespace {

constexpr const char* authority_key_identifier = "2.5.29.35";

ByteView view(const CRYPT_DATA_BLOB& blob) { return {blob.pbData, blob.cbData}; }
ByteView view(const CACMPT_BLOB& blob) { return {blob.data, blob.length}; }
CACMPT_BLOB copy(ByteView bytes) { return {bytes.data, bytes.length}; }

bool same_name(ByteView sought, const CERT_NAME_BLOB& found) {
    CACMPT_BLOB own_sought;
    CACMPT_BLOB own_found;
    return RememberedNames::form_of(sought, own_sought) ==
           RememberedNames::form_of(view(found), own_found);
}

/// The keyIdentifier of the authority key identifier is `key_id`, or it cannot be told.
bool may_have_key_id(std::span<const CERT_EXTENSION> extensions, ByteView key_id) {
    const auto extension = std::ranges::find_if(extensions, [](const CERT_EXTENSION& candidate) {
        return std::string_view(candidate.pszObjId) == authority_key_identifier;
    });
    if (extension == extensions.end()) {
        return true;
    }
    const CRYPT_OBJID_BLOB& value = extension->Value;
    const auto decode = [&value](void* structure, DWORD& size) {
        return platform_answer(
            [&] {
                return CryptDecodeObject(certificate_encoding, authority_key_identifier,
                                         value.pbData, value.cbData, 0, structure, &size);
            },
            source_module::store_util, __LINE__);
    };
    DWORD size = 0;
    if (!decode(nullptr, size)) {
        return true;
    }
    std::vector<std::uint8_t> structure(size);
    if (!decode(structure.data(), size)) {
        return true;
    }
    const auto* const decoded =
        reinterpret_cast<const CERT_AUTHORITY_KEY_ID2_INFO*>(structure.data());
    return view(decoded->KeyId) == key_id;
}

} // namespace

CertFindByKeyIdentifier::CertFindByKeyIdentifier(ByteView key_identifier)
    : identifier_{key_identifier.length, const_cast<BYTE*>(key_identifier.data)} {
    find_type = CERT_FIND_KEY_IDENTIFIER;
    find_para = &identifier_;
}

bool CertFindBySubjectAndSerial::match(const _CERT_CONTEXT* certificate) {
    const CERT_INFO& info = *certificate->pCertInfo;
    if (serial.length != 0 && !(view(serial) == view(info.SerialNumber))) {
        return false;
    }
    return name.empty() || same_name(name, info.Subject);
}

bool CertFindByIssuerSubStrAndSerial::match(const _CERT_CONTEXT* certificate) {
    const CERT_INFO& info = *certificate->pCertInfo;
    if (substring != nullptr) {
        const WideString issuer = name_blob_to_text(copy(view(info.Issuer)));
        if (issuer.find(substring) == WideString::npos) {
            return false;
        }
    }
    return serial == nullptr || serial->length == 0 || view(*serial) == view(info.SerialNumber);
}

bool CrlFindByIssuer::match(const _CRL_CONTEXT* crl) {
    return issuer_->length == 0 || same_name(view(*issuer_), crl->pCrlInfo->Issuer);
}

bool CrlFindByIssuerKeyId::match(const _CRL_CONTEXT* crl) {
    const CRL_INFO& info = *crl->pCrlInfo;
    if (issuer_->length != 0 && !same_name(view(*issuer_), info.Issuer)) {
        return false;
    }
    return key_id_->length == 0 ||
           may_have_key_id(std::span(info.rgExtension, info.cExtension), view(*key_id_));
}

} // namespace norvane
