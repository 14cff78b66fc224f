#include "platform/StoreMaterial.h"

#include <cstring>
#include <memory>

namespace norvane::testing {
namespace {

// What the extension holds, out of the whole element of the extension.
Bytes value_of(const Bytes& extension) {
    const Bytes encoded = CertificateBuilder{.extensions = {extension}}.sign(Key::ec(0));
    const CertificateContext context = certificate_context(encoded);
    return bytes_of(context->pCertInfo->rgExtension[0].Value);
}

class Decoded {
  public:
    explicit Decoded(const Bytes& value, LPCSTR type = szOID_AUTHORITY_KEY_IDENTIFIER2) {
        const auto decode = [&](void* structure) {
            const BOOL done = CryptDecodeObject(0x10001, type, value.data(), size_of(value), 0,
                                                structure, &size_);
            error_ = done ? 0 : GetLastError();
            return done;
        };
        if (!decode(nullptr))
            return;
        memory_ = std::make_unique<BYTE[]>(size_); // of exactly this size, for the sanitizers
        EXPECT_TRUE(decode(memory_.get()));
    }
    [[nodiscard]] const CERT_AUTHORITY_KEY_ID2_INFO* operator->() const {
        return reinterpret_cast<const CERT_AUTHORITY_KEY_ID2_INFO*>(memory_.get());
    }
    [[nodiscard]] DWORD error() const { return error_; }

  private:
    DWORD size_ = 0;
    DWORD error_ = 0;
    std::unique_ptr<BYTE[]> memory_;
};

Bytes with_issuer(const std::vector<Bytes>& names) {
    return value_of(authority_key_identifier(hex("0102"), names, hex("00 80")));
}

TEST(DecodeAuthorityKeyId, GivesEveryFieldAndEveryKindOfName) {
    const Bytes issuer = common_name("A");
    const Decoded decoded(with_issuer({
        context(0, oid("1.2.3"), context(0, utf8("x"))),
        context_primitive(1, text_bytes("a@b")),
        context_primitive(2, text_bytes("b")),
        context(3, null()),
        directory_name(issuer),
        url("http://c"),
        context_primitive(7, hex("7f000001")),
        context_primitive(8, hex("2a03")),
    }));
    ASSERT_EQ(decoded.error(), 0);
    EXPECT_EQ(bytes_of(decoded->KeyId), hex("0102"));
    EXPECT_EQ(bytes_of(decoded->AuthorityCertSerialNumber), hex("8000"));
    ASSERT_EQ(decoded->AuthorityCertIssuer.cAltEntry, 8);
    const CERT_ALT_NAME_ENTRY* const names = decoded->AuthorityCertIssuer.rgAltEntry;
    for (const DWORD choice : {1U, 2U, 3U, 4U, 5U, 7U, 8U, 9U})
        EXPECT_EQ(names[choice - (choice > 6 ? 2 : 1)].dwAltNameChoice, choice);
    EXPECT_STREQ(names[0].pOtherName->pszObjId, "1.2.3");
    EXPECT_EQ(bytes_of(names[0].pOtherName->Value), utf8("x"));
    EXPECT_EQ(std::u16string(names[1].pwszRfc822Name), u"a@b");
    EXPECT_EQ(std::u16string(names[2].pwszDNSName), u"b");
    EXPECT_EQ(bytes_of(names[4].DirectoryName), issuer);
    EXPECT_EQ(std::u16string(names[5].pwszURL), u"http://c");
    EXPECT_EQ(bytes_of(names[6].IPAddress), hex("7f000001"));
    EXPECT_STREQ(names[7].pszRegisteredID, "1.2.3");
}

TEST(DecodeAuthorityKeyId, LeavesEmptyWhatIsAbsentAndTakesTheNumberOfTheType) {
    const Decoded decoded(hex("3000"), X509_AUTHORITY_KEY_ID2);
    ASSERT_EQ(decoded.error(), 0);
    EXPECT_EQ(decoded->KeyId.cbData, 0);
    EXPECT_EQ(decoded->AuthorityCertIssuer.cAltEntry, 0);
    EXPECT_EQ(decoded->AuthorityCertSerialNumber.cbData, 0);
}

TEST(DecodeAuthorityKeyId, RefusesWhatIsMalformed) {
    const struct {
        Bytes value;
        DWORD error;
    } cases[] = {
        {{}, CRYPT_E_ASN1_EOD},
        {hex("3000 00"), CRYPT_E_ASN1_NOEOD},
        {hex("0400"), CRYPT_E_ASN1_BADTAG},
        {with_issuer({url("\xff")}), CRYPT_E_INVALID_IA5_STRING},
        {with_issuer({context(0, integer(1))}), CRYPT_E_ASN1_BADTAG},
        {with_issuer({context_primitive(8, hex("80"))}), CRYPT_E_ASN1_CORRUPT},
    };
    for (const auto& item : cases)
        EXPECT_EQ(Decoded(item.value).error(), item.error) << ::testing::PrintToString(item.value);
}

} // namespace
} // namespace norvane::testing
