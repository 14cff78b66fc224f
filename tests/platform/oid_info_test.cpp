#include <norvane/wincrypt.h>

#include <array>
#include <cstring>
#include <gtest/gtest.h>

namespace {

PCCRYPT_OID_INFO find_pair(ALG_ID hash, ALG_ID key) {
    std::array<ALG_ID, 2> pair{hash, key};
    return CryptFindOIDInfo(CRYPT_OID_INFO_SIGN_KEY, pair.data(), CRYPT_SIGN_ALG_OID_GROUP_ID);
}

BOOL expect_own_pair(PCCRYPT_OID_INFO info, void* count) {
    ALG_ID key = 0;
    EXPECT_GE(info->ExtraInfo.cbData, sizeof key);
    std::memcpy(&key, info->ExtraInfo.pbData, sizeof key);
    EXPECT_EQ(find_pair(info->Algid, key), info) << info->pszOID;
    ++*static_cast<int*>(count);
    return TRUE;
}

} // namespace

TEST(OidInfo, LeadsFromEachPairOfHashAndKeyToOneSignatureAndToNoneThatIsBroken) {
    int count = 0;
    EXPECT_TRUE(CryptEnumOIDInfo(CRYPT_SIGN_ALG_OID_GROUP_ID, 0, &count, expect_own_pair));
    EXPECT_GT(count, 10);
    EXPECT_EQ(find_pair(CALG_SHA_256, CALG_RSA_KEYX), nullptr);
    EXPECT_EQ(CertOIDToAlgId("1.2.840.113549.1.1.1"), CALG_RSA_KEYX) << "listed first";
    for (const char* broken : {"1.2.840.113549.2.5", "1.2.840.113549.1.1.4"})
        EXPECT_EQ(CertOIDToAlgId(broken), 0U) << broken;
}
