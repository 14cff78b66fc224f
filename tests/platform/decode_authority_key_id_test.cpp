#include "platform/StoreMaterial.h"

#include <memory>

namespace norvane::testing {
namespace {

// The extension's value: of these names for the issuer, and of fixed identifiers.
Bytes with_issuer(const std::vector<Bytes>& names) {
    const Bytes extension = authority_key_identifier(hex("0102"), names, hex("00 80"));
    const Bytes encoded = CertificateBuilder{.extensions = {extension}}.sign(Key::ec(0));
    const CertificateContext context = certificate_context(encoded);
    return bytes_of(context->pCertInfo->rgExtension[0].Value);
}

// In memory of exactly the size asked for, for the sanitizers; none on failure.
std::unique_ptr<BYTE[]> decode(const Bytes& value) {
    DWORD size = 0;
    const auto attempt = [&](void* structure) {
        return CryptDecodeObject(0x10001, szOID_AUTHORITY_KEY_IDENTIFIER2, value.data(),
                                 size_of(value), 0, structure, &size);
    };
    auto memory = attempt(nullptr) ? std::make_unique<BYTE[]>(size) : nullptr;
    EXPECT_TRUE(!memory || attempt(memory.get()));
    return memory;
}

TEST(DecodeAuthorityKeyId, GivesEveryFieldAndNamesOfEveryLayout) {
    const auto memory = decode(with_issuer({context(0, oid("1.2.3"), context(0, utf8("x"))),
                                            directory_name(common_name("A")), url("http://c"),
                                            context_primitive(8, hex("2a03"))}));
    ASSERT_NE(memory, nullptr);
    const auto& info = *reinterpret_cast<CERT_AUTHORITY_KEY_ID2_INFO*>(memory.get());
    EXPECT_EQ(bytes_of(info.KeyId), hex("0102"));
    EXPECT_EQ(bytes_of(info.AuthorityCertSerialNumber), hex("8000"));
    ASSERT_EQ(info.AuthorityCertIssuer.cAltEntry, 4);
    const auto* const names = info.AuthorityCertIssuer.rgAltEntry;
    EXPECT_STREQ(names[0].pOtherName->pszObjId, "1.2.3");
    EXPECT_EQ(bytes_of(names[0].pOtherName->Value), utf8("x"));
    EXPECT_EQ(bytes_of(names[1].DirectoryName), common_name("A"));
    EXPECT_EQ(std::u16string(names[2].pwszURL), u"http://c");
    EXPECT_STREQ(names[3].pszRegisteredID, "1.2.3");
}

TEST(DecodeAuthorityKeyId, RefusesWhatIsMalformed) {
    const std::pair<Bytes, DWORD> cases[] = {
        {hex("3000 00"), CRYPT_E_ASN1_NOEOD},
        {with_issuer({url("\xff")}), CRYPT_E_INVALID_IA5_STRING},
        {with_issuer({context(0, integer(1))}), CRYPT_E_ASN1_BADTAG},
        {with_issuer({context_primitive(8, hex("80"))}), CRYPT_E_ASN1_CORRUPT},
    };
    for (const auto& [value, error] : cases) {
        EXPECT_EQ(decode(value), nullptr);
        EXPECT_EQ(GetLastError(), error) << ::testing::PrintToString(value);
    }
    EXPECT_NE(decode(hex("3000")), nullptr) << "all may be absent";
}

} // namespace
} // namespace norvane::testing
