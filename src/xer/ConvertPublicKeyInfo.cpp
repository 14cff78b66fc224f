#include "asn1/GostPublicKeyParametersXer.h"
#include "values/Base64.h"
#include "xer/KeyBlob.h"
#include "xer/KeyText.h"
#include "xer/LastError.h"
#include "xer/LocalMemory.h"

#include <norvane/revocation.h>

#include <cstring>
#include <new>
#include <string_view>

namespace norvane {
namespace {

/// What the work area is larger than the text of the key.
constexpr SIZE_T spare_work_room = 16;

/// Decodes the key out of its text into `work`, which has room for the whole text. Returns the size
/// of the key; 0 if there is none, with the last error as it was or as base64_decode left it.
DWORD decode_key(std::string_view text, const LocalMemory& work) {
    const std::string_view content = key_text_content(text);
    auto size = static_cast<std::uint32_t>(text.size());
    const bool decoded = !content.empty() &&
                         base64_decode(content.data(), static_cast<std::uint32_t>(content.size()),
                                       work.data(), &size);
    return decoded ? size : 0;
}

/// Reads the text of parameters into the value of `control`, and has `encoding` view their BER,
/// which lies in the memory of that value. FALSE with the last error if the text is anything else.
BOOL decode_parameters(CRYPT_OBJID_BLOB text, ASN1C_GostR3410_94_PublicKeyParameters& control,
                       ByteView& encoding) {
    ASN1XERDecodeBuffer decode_buffer(text.pbData, text.cbData);
    ASN1BEREncodeBuffer encode_buffer;
    try {
        const int length =
            control.DecodeFrom(decode_buffer) < 0 ? 0 : control.EncodeTo(encode_buffer);
        if (length > 0) {
            encoding = {encode_buffer.getMsgPtr(), static_cast<std::uint32_t>(length)};
            return TRUE;
        }
    } catch (const OSRTSAXException&) {
        // What the parser refuses is told by the code alone.
    }
    return fail(static_cast<DWORD>(CRYPT_E_ASN1_ERROR));
}

BOOL convert(const CERT_PUBLIC_KEY_INFO& info, BYTE** blob_output, DWORD* size_output) {
    const PCCRYPT_OID_INFO algorithm = CryptFindOIDInfo(
        CRYPT_OID_INFO_OID_KEY, info.Algorithm.pszObjId, CRYPT_PUBKEY_ALG_OID_GROUP_ID);
    if (algorithm == nullptr) {
        return FALSE;
    }
    const LocalMemory key(SIZE_T{info.PublicKey.cbData} + spare_work_room);
    if (key.is_null()) {
        return FALSE;
    }
    const DWORD key_size = decode_key(
        {reinterpret_cast<const char*>(info.PublicKey.pbData), info.PublicKey.cbData}, key);
    if (key_size == 0) {
        return FALSE;
    }
    if (key_size > max_key_size) {
        return fail(static_cast<DWORD>(CRYPT_E_BAD_LEN));
    }
    ASN1BERDecodeBuffer unused;
    ASN1T_GostR3410_94_PublicKeyParameters value;
    ASN1C_GostR3410_94_PublicKeyParameters control(unused, value);
    ByteView parameters;
    if (decode_parameters(info.Algorithm.Parameters, control, parameters) == FALSE) {
        return FALSE;
    }
    const DWORD size = key_blob_header_size + parameters.length + key_size;
    if (blob_output == nullptr) {
        *size_output = size;
        return TRUE;
    }
    LocalMemory blob(size);
    if (blob.is_null()) {
        return FALSE;
    }
    write_key_blob_header(blob.data(), algorithm->Algid, key_size);
    BYTE* const body = blob.data() + key_blob_header_size;
    std::memcpy(body, parameters.data, parameters.length);
    std::memcpy(body + parameters.length, key.data(), key_size);
    *blob_output = blob.release();
    *size_output = size;
    return TRUE;
}

} // namespace
} // namespace norvane

BOOL WINAPI NorvaneXERConvertPublicKeyInfo(DWORD /*dwCertEncodingType*/,
                                           PCERT_PUBLIC_KEY_INFO pInfo, ALG_ID /*aiKeyAlg*/,
                                           DWORD /*dwFlags*/, BYTE** ppbPubKey,
                                           DWORD* pcbPubKey) noexcept {
    try {
        return norvane::convert(*pInfo, ppbPubKey, pcbPubKey);
    } catch (const std::bad_alloc&) {
        return norvane::fail(ERROR_NOT_ENOUGH_MEMORY);
    }
}
