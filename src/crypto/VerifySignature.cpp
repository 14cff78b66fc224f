#include "crypto/VerifySignature.h"

#include "call/Question.h"
#include "crypto/OidInfoLookup.h"
#include "crypto/ProviderLookup.h"
#include "record/Record.h"
#include "values/ObjectIdentifierText.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace norvane {
namespace {

constexpr std::size_t max_oid_length = 255;
constexpr std::size_t max_key_oid_length = 128;

template <std::size_t max_length>
using OidText = std::array<char, max_length + 1>;

template <std::size_t max_length>
OidText<max_length> text_of(const ASN1TObjId& oid, const char* too_long) {
    OidText<max_length> text;
    oid_to_text(text.data(), oid, text.size(), too_long);
    return text;
}

[[noreturn]] void throw_last_error(std::uint32_t line) {
    throw_platform_error(GetLastError(), source_module::encode_and, line);
}

/// An open provider.
class ProviderHolder {
  public:
    explicit ProviderHolder(HCRYPTPROV handle) noexcept : handle_(handle) {}
    ProviderHolder(const ProviderHolder&) = delete;
    ProviderHolder& operator=(const ProviderHolder&) = delete;
    ~ProviderHolder() { CryptReleaseContext(handle_, 0); }

    [[nodiscard]] HCRYPTPROV get() const noexcept { return handle_; }

  private:
    HCRYPTPROV handle_;
};

/// The hash and the key of one verification, as far as they exist. The hash goes first.
struct HashAndKey {
    HCRYPTHASH hash = 0;
    HCRYPTKEY key = 0;

    HashAndKey() = default;
    HashAndKey(const HashAndKey&) = delete;
    HashAndKey& operator=(const HashAndKey&) = delete;
    ~HashAndKey() {
        if (hash != 0) {
            CryptDestroyHash(hash);
        }
        if (key != 0) {
            CryptDestroyKey(key);
        }
    }
};

/// The type of provider that the platform wants for a signature algorithm; 0 if any will do.
DWORD wanted_provider_type(const CRYPT_OID_INFO& info) {
    constexpr std::size_t type_offset = 2 * sizeof(DWORD);
    DWORD type = 0;
    if (info.dwGroupId == CRYPT_SIGN_ALG_OID_GROUP_ID && info.ExtraInfo.pbData != nullptr &&
        info.ExtraInfo.cbData >= type_offset + sizeof type) {
        std::memcpy(&type, info.ExtraInfo.pbData + type_offset, sizeof type);
    }
    return type;
}

/// A provider for the signature algorithm, which the caller releases.
HCRYPTPROV choose_provider(const CRYPT_OID_INFO& info, const char* key_oid) {
    HCRYPTPROV provider = 0;
    if (const DWORD type = wanted_provider_type(info); type != 0) {
        if (CryptAcquireContextA(&provider, nullptr, nullptr, type, CRYPT_VERIFYCONTEXT) == FALSE) {
            throw_last_error(__LINE__);
        }
        return provider;
    }
    provider = find_provider_for_algid(algorithm_number(key_oid));
    if (provider == 0) {
        SetLastError(static_cast<DWORD>(CRYPT_E_NOT_FOUND));
        throw_last_error(__LINE__);
    }
    return provider;
}

/// The bytes, which the platform takes by a pointer that could write but does not.
BYTE* platform_bytes(const std::uint8_t* bytes) { return const_cast<BYTE*>(bytes); }

} // namespace

bool verify_signature(ASN1BEREncodeBuffer& encode_buffer, const SignedPart& tbs,
                      const ASN1TBitStr& signature, const ASN1T_SubjectPublicKeyInfo& spki,
                      const ASN1T_AlgorithmIdentifier& signature_algorithm) {
    constexpr const char* too_long = "Invalid ASN1T_AlgorithmIdentifier";
    const auto signature_oid = text_of<max_oid_length>(signature_algorithm.algorithm, too_long);
    const auto key_oid = text_of<max_oid_length>(spki.algorithm.algorithm, too_long);

    const ALG_ID hash_algid = algorithm_number(signature_oid.data());
    const std::string_view algorithm = signature_oid.data();
    if (hash_algid == 0 || GET_ALG_CLASS(hash_algid) != ALG_CLASS_HASH) {
        return fails(event::algorithm_not_offered, record_value("algorithm", algorithm));
    }
    const char* const hash_oid = platform_answer([&] { return CertAlgIdToOID(hash_algid); },
                                                 source_module::encode_and, __LINE__);
    if (hash_oid == nullptr) {
        return false;
    }
    const CRYPT_OID_INFO* const info = find_signature_oid_info(key_oid.data(), hash_oid);
    if (info == nullptr) {
        return fails(event::algorithm_not_offered, record_value("algorithm", algorithm));
    }
    // The algorithm of the key and the algorithm of the signature must belong together.
    if (std::strcmp(info->pszOID, signature_oid.data()) != 0) {
        return false;
    }
    const ProviderHolder provider(choose_provider(*info, key_oid.data()));
    return verify_with_provider(encode_buffer, tbs, signature, spki, provider.get(), info->Algid);
}

bool verify_with_provider(ASN1BEREncodeBuffer& encode_buffer, const SignedPart& tbs,
                          const ASN1TBitStr& signature, const ASN1T_SubjectPublicKeyInfo& spki,
                          HCRYPTPROV provider, ALG_ID hash_algid) {
    CACMPT_BLOB reversed_signature;
    reverse_signature(reversed_signature, signature);

    const int length = tbs.EncodeTo(encode_buffer);
    if (length < 1) {
        throw Asn1Exception(rtErrGetText(encode_buffer.getCtxt()), source_module::encode_and,
                            __LINE__);
    }

    charge_verification();
    charge(Resource::hashed_bytes, static_cast<std::uint64_t>(length));
    HashAndKey handles;
    if (CryptCreateHash(provider, hash_algid, 0, 0, &handles.hash) == FALSE) {
        throw_last_error(__LINE__);
    }
    if (CryptHashData(handles.hash, encode_buffer.getMsgPtr(), static_cast<DWORD>(length), 0) ==
        FALSE) {
        throw_last_error(__LINE__);
    }

    auto key_oid = text_of<max_key_oid_length>(spki.algorithm.algorithm, "algorithm id too long");
    const ByteView key = spki.subjectPublicKey.octets();
    CERT_PUBLIC_KEY_INFO info{};
    info.Algorithm.pszObjId = key_oid.data();
    info.Algorithm.Parameters.cbData = spki.algorithm.parameters.length;
    info.Algorithm.Parameters.pbData = platform_bytes(spki.algorithm.parameters.data);
    info.PublicKey.cbData = key.length;
    info.PublicKey.pbData = platform_bytes(key.data);
    info.PublicKey.cUnusedBits = 0;
    if (CryptImportPublicKeyInfoEx(provider, X509_ASN_ENCODING | PKCS_7_ASN_ENCODING, &info, 0, 0,
                                   nullptr, &handles.key) == FALSE) {
        throw_last_error(__LINE__);
    }
    return platform_answer(
               [&] {
                   return CryptVerifySignatureW(handles.hash, reversed_signature.data,
                                                reversed_signature.length, handles.key, nullptr, 0);
               },
               source_module::encode_and, __LINE__) != FALSE;
}

void reverse_signature(CACMPT_BLOB& out, const ASN1TBitStr& signature) {
    const std::uint32_t size = (signature.numbits + 7) / 8;
    out.resize(size);
    if (signature.numbits > std::uint64_t{size} * 8) {
        throw CAException("signature too long", source_module::encode_and, __LINE__);
    }
    if (size != 0) {
        std::reverse_copy(signature.data, signature.data + size, out.data);
    }
}

} // namespace norvane
