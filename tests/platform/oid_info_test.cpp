#include <norvane/wincrypt.h>

#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

namespace {

std::vector<const CRYPT_OID_INFO*> group(DWORD id) {
    std::vector<const CRYPT_OID_INFO*> entries;
    EXPECT_NE(CryptEnumOIDInfo(
                  id, 0, &entries,
                  [](PCCRYPT_OID_INFO info, void* list) {
                      static_cast<std::vector<const CRYPT_OID_INFO*>*>(list)->push_back(info);
                      return TRUE;
                  }),
              FALSE);
    return entries;
}

PCCRYPT_OID_INFO find_pair(ALG_ID hash, ALG_ID key) {
    std::array<ALG_ID, 2> pair{hash, key};
    return CryptFindOIDInfo(CRYPT_OID_INFO_SIGN_KEY, pair.data(), CRYPT_SIGN_ALG_OID_GROUP_ID);
}

ALG_ID key_algorithm(const CRYPT_OID_INFO& info) {
    ALG_ID value = 0;
    EXPECT_GE(info.ExtraInfo.cbData, sizeof value);
    std::memcpy(&value, info.ExtraInfo.pbData, sizeof value);
    return value;
}

} // namespace

TEST(OidInfo, LeadsFromSignatureToHashAndKeyAndBack) {
    const struct {
        const char* signature;
        const char* hash;
        ALG_ID key;
    } cases[] = {{"1.2.840.113549.1.1.5", "1.3.14.3.2.26", CALG_RSA_SIGN},
                 {"1.2.840.113549.1.1.11", "2.16.840.1.101.3.4.2.1", CALG_RSA_SIGN},
                 {"1.2.840.10040.4.3", "1.3.14.3.2.26", CALG_DSS_SIGN},
                 {"1.2.840.10045.4.3.3", "2.16.840.1.101.3.4.2.2", CALG_ECDSA}};
    for (const auto& test : cases) {
        SCOPED_TRACE(test.signature);
        const ALG_ID hash = CertOIDToAlgId(test.signature);
        EXPECT_STREQ(CertAlgIdToOID(hash), test.hash);
        EXPECT_EQ(CertOIDToAlgId(test.hash), hash);
        const auto* const info = find_pair(hash, test.key);
        ASSERT_NE(info, nullptr);
        EXPECT_STREQ(info->pszOID, test.signature);
    }
    // Every pair has one entry only, and each entry is found by its own pair.
    for (const auto* info : group(CRYPT_SIGN_ALG_OID_GROUP_ID)) {
        EXPECT_EQ(find_pair(info->Algid, key_algorithm(*info)), info) << info->pszOID;
    }
    EXPECT_EQ(find_pair(CALG_SHA_256, CALG_RSA_KEYX), nullptr);
    EXPECT_EQ(CertOIDToAlgId("1.2.840.113549.1.1.1"), CALG_RSA_KEYX) << "listed first";
    for (const char* broken : {"1.2.840.113549.2.5", "1.2.840.113549.1.1.4"}) {
        EXPECT_EQ(CertOIDToAlgId(broken), 0U) << broken;
    }
}
