#include "platform/StoreMaterial.h"

#include <limits>
#include <memory>

namespace norvane::testing {
namespace {

constexpr int untouched = 77;
using Outcome = std::pair<DWORD, int>;

Outcome decode_enumerated(const Bytes& encoded, DWORD size = sizeof(int)) {
    int value = untouched;
    const BOOL done = CryptDecodeObject(X509_ASN_ENCODING, X509_ENUMERATED, encoded.data(),
                                        size_of(encoded), 0, &value, &size);
    EXPECT_EQ(size, sizeof value);
    return {done ? ERROR_SUCCESS : GetLastError(), value};
}

TEST(DecodeObject, ReadsEnumeratedOrTellsWhatIsWrongWithTheBytes) {
    const std::pair<Bytes, Outcome> cases[] = {
        {hex("0a 02 00 80"), {ERROR_SUCCESS, 128}},
        {hex("0a 04 80 00 00 00"), {ERROR_SUCCESS, std::numeric_limits<int>::min()}},
        {hex("0a 89 00 00 00 00 00 00 00 00 01 05"), {ERROR_SUCCESS, 5}}, // beyond a size_t
        {hex("0a 89 01 00 00 00 00 00 00 00 01 05"), {CRYPT_E_ASN1_EOD, untouched}}, // 2^64 + 1
        {hex("2a 01 00"), {CRYPT_E_ASN1_BADTAG, untouched}},                         // constructed
        {hex("0a 00"), {CRYPT_E_ASN1_CORRUPT, untouched}},
        {hex("0a 05 00 00 00 00 01"), {CRYPT_E_ASN1_LARGE, untouched}},
        {hex("0a 01 00 00"), {CRYPT_E_ASN1_NOEOD, untouched}},
    };
    for (const auto& [encoded, outcome] : cases)
        EXPECT_EQ(decode_enumerated(encoded), outcome) << ::testing::PrintToString(encoded);
    EXPECT_EQ(decode_enumerated(hex("0a 01 02"), sizeof(int) - 1),
              (Outcome{ERROR_MORE_DATA, untouched}));
}

TEST(DecodeObject, GivesEveryFieldOfAuthorityKeyIdentifiersInOneBlockOfTheSizeTold) {
    const Bytes extension = authority_key_identifier(
        hex("0102"),
        {context(0, oid("1.2.3"), context(0, utf8("x"))), directory_name(common_name("A")),
         url("http://c"), context_primitive(8, hex("2a03"))},
        hex("00 80"));
    const CertificateContext context =
        certificate_context(CertificateBuilder{.extensions = {extension}}.sign(Key::ec(0)));
    const CRYPT_DATA_BLOB& value = context->pCertInfo->rgExtension[0].Value;
    DWORD size = 0;
    const auto decode = [&](void* structure) {
        return CryptDecodeObject(0x10001, szOID_AUTHORITY_KEY_IDENTIFIER2, value.pbData,
                                 value.cbData, 0, structure, &size);
    };
    ASSERT_TRUE(decode(nullptr));
    const auto memory = std::make_unique<BYTE[]>(size);
    ASSERT_TRUE(decode(memory.get()));
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

} // namespace
} // namespace norvane::testing
