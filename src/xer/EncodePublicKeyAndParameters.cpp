#include "asn1/CharString.h"
#include "asn1/ElementExtent.h"
#include "asn1/GostPublicKeyParametersXer.h"
#include "xer/KeyBlob.h"
#include "xer/KeyText.h"
#include "xer/LastError.h"
#include "xer/LocalMemory.h"

#include <norvane/revocation.h>

#include <cstring>
#include <new>
#include <span>

namespace norvane {
namespace {

/// Where a text and its length go.
struct TextOutput {
    BYTE** text;
    DWORD* length;
};

BOOL fail_for_parameters() { return fail(static_cast<DWORD>(CRYPT_E_ASN1_ERROR)); }

/// The first element of `bytes`; empty if there is none.
ByteView first_element(ByteView bytes) {
    ASN1BERDecodeBuffer buffer(bytes.data, bytes.length);
    ByteView element;
    const bool found = xd_setp(buffer.getCtxt(), bytes.data, bytes.length) >= 0 &&
                       xd_element(buffer.getCtxt(), element) >= 0;
    return found ? element : ByteView();
}

BOOL encode_parameters(ByteView parameters, TextOutput output) {
    ASN1BERDecodeBuffer decode_buffer(parameters.data, parameters.length);
    ASN1T_GostR3410_94_PublicKeyParameters value;
    ASN1C_GostR3410_94_PublicKeyParameters control(decode_buffer, value);
    if (control.DecodeFrom(decode_buffer) < 0) {
        return fail_for_parameters();
    }
    ASN1XEREncodeBuffer encode_buffer;
    rtCtxtSetFlag(encode_buffer.getCtxt(), ASN1Flag::open_type);
    rtCtxtSetFlag(encode_buffer.getCtxt(), ASN1Flag::canonical);
    if (control.EncodeTo(encode_buffer) != 0) {
        return fail_for_parameters();
    }
    LocalMemory text(encode_buffer.getMsgLen());
    if (text.is_null()) {
        return FALSE;
    }
    std::memcpy(text.data(), encode_buffer.getMsgPtr(), encode_buffer.getMsgLen());
    *output.text = text.release();
    *output.length = encode_buffer.getMsgLen();
    return TRUE;
}

/// `rest` is what follows the parameters in the blob. The room is made, and its size told, before
/// anybody asks whether there is a key.
BOOL encode_key(ByteView rest, std::uint32_t key_size, TextOutput output) {
    const std::uint32_t room = key_text_room(key_size);
    LocalMemory text(room);
    if (text.is_null()) {
        return FALSE;
    }
    *output.length = stated_key_text_size(key_size);
    if (key_size == 0 || key_size > rest.length) {
        return fail(ERROR_BAD_ARGUMENTS);
    }
    const std::uint32_t length =
        write_key_text({rest.data, key_size}, {reinterpret_cast<char*>(text.data()), room});
    if (length == 0) {
        return FALSE;
    }
    *output.text = text.release();
    *output.length = length;
    return TRUE;
}

BOOL encode_blob(ByteView blob, TextOutput key_text, TextOutput parameters_text) {
    *key_text.text = nullptr;
    *parameters_text.text = nullptr;
    if (blob.length < key_blob_header_size) {
        return fail_for_parameters();
    }
    const std::uint32_t key_size = key_size_in(blob.data);
    const ByteView body{blob.data + key_blob_header_size, blob.length - key_blob_header_size};
    const ByteView parameters = first_element(body);
    if (parameters.empty()) {
        return fail_for_parameters();
    }
    if (encode_parameters(parameters, parameters_text) == FALSE) {
        return FALSE;
    }
    const ByteView rest{parameters.end(), body.length - parameters.length};
    return encode_key(rest, key_size, key_text);
}

} // namespace
} // namespace norvane

BOOL WINAPI NorvaneXEREncodePublicKeyAndParameters(
    DWORD /*dwCertEncodingType*/, LPCSTR /*pszPublicKeyObjId*/, const BYTE* pbPubKeyBlob,
    DWORD cbPubKeyBlob, DWORD /*dwFlags*/, void* /*pvAuxInfo*/, BYTE** ppbKeyText,
    DWORD* pcbKeyText, BYTE** ppbParametersText, DWORD* pcbParametersText) noexcept {
    try {
        return norvane::encode_blob({pbPubKeyBlob, cbPubKeyBlob}, {ppbKeyText, pcbKeyText},
                                    {ppbParametersText, pcbParametersText});
    } catch (const std::bad_alloc&) {
        return norvane::fail(ERROR_NOT_ENOUGH_MEMORY);
    }
}
