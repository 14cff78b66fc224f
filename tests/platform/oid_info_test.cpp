#include <norvane/wincrypt.h>

#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
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

PCCRYPT_OID_INFO find_pair(ALG_ID hash, ALG_ID key, DWORD group_id = 0) {
    std::array<ALG_ID, 2> pair{hash, key};
    return CryptFindOIDInfo(CRYPT_OID_INFO_SIGN_KEY, pair.data(), group_id);
}

PCCRYPT_OID_INFO find_oid(std::string oid, DWORD group_id = 0) {
    return CryptFindOIDInfo(CRYPT_OID_INFO_OID_KEY, oid.data(), group_id);
}

DWORD word(const CRYPT_OID_INFO& info, std::size_t index) {
    DWORD value = 0;
    EXPECT_GE(info.ExtraInfo.cbData, (index + 1) * sizeof value);
    std::memcpy(&value, info.ExtraInfo.pbData + index * sizeof value, sizeof value);
    return value;
}

} // namespace

TEST(OidInfo, LeadsFromSignatureToHashAndKeyAndBack) {
    const struct {
        const char* signature;
        const char* hash;
        const char* key;
    } cases[] = {{"1.2.840.113549.1.1.5", "1.3.14.3.2.26", "1.2.840.113549.1.1.1"},
                 {"1.2.840.113549.1.1.11", "2.16.840.1.101.3.4.2.1", "1.2.840.113549.1.1.1"},
                 {"1.2.840.113549.1.1.12", "2.16.840.1.101.3.4.2.2", "1.2.840.113549.1.1.1"},
                 {"1.2.840.113549.1.1.13", "2.16.840.1.101.3.4.2.3", "1.2.840.113549.1.1.1"},
                 {"1.2.840.10040.4.3", "1.3.14.3.2.26", "1.2.840.10040.4.1"},
                 {"2.16.840.1.101.3.4.3.2", "2.16.840.1.101.3.4.2.1", "1.2.840.10040.4.1"},
                 {"1.2.840.10045.4.1", "1.3.14.3.2.26", "1.2.840.10045.2.1"},
                 {"1.2.840.10045.4.3.2", "2.16.840.1.101.3.4.2.1", "1.2.840.10045.2.1"},
                 {"1.2.840.10045.4.3.3", "2.16.840.1.101.3.4.2.2", "1.2.840.10045.2.1"},
                 {"1.2.840.10045.4.3.4", "2.16.840.1.101.3.4.2.3", "1.2.840.10045.2.1"},
                 {"1.2.643.2.2.4", "1.2.643.2.2.9", "1.2.643.2.2.20"},
                 {"1.2.643.2.2.3", "1.2.643.2.2.9", "1.2.643.2.2.19"},
                 {"1.2.643.7.1.1.3.2", "1.2.643.7.1.1.2.2", "1.2.643.7.1.1.1.1"},
                 {"1.2.643.7.1.1.3.3", "1.2.643.7.1.1.2.3", "1.2.643.7.1.1.1.2"}};
    for (const auto& test : cases) {
        SCOPED_TRACE(test.signature);
        const ALG_ID hash = CertOIDToAlgId(test.signature);
        EXPECT_EQ(GET_ALG_CLASS(hash), ALG_CLASS_HASH);
        EXPECT_STREQ(CertAlgIdToOID(hash), test.hash);
        EXPECT_EQ(CertOIDToAlgId(test.hash), hash);
        ALG_ID key = 0;
        for (const auto* info : group(CRYPT_PUBKEY_ALG_OID_GROUP_ID)) {
            if (std::string(info->pszOID) == test.key &&
                GET_ALG_CLASS(info->Algid) == ALG_CLASS_SIGNATURE) {
                key = info->Algid;
            }
        }
        const auto* const info = find_pair(hash, key, CRYPT_SIGN_ALG_OID_GROUP_ID);
        ASSERT_NE(info, nullptr);
        EXPECT_STREQ(info->pszOID, test.signature);
        EXPECT_EQ(info->cbSize, 48U);
        EXPECT_EQ(word(*info, 0), key);
    }
    // Every pair has one entry only, and each entry is found by its own pair.
    for (const auto* info : group(CRYPT_SIGN_ALG_OID_GROUP_ID)) {
        EXPECT_EQ(find_pair(info->Algid, word(*info, 0)), info) << info->pszOID;
    }
}

TEST(OidInfo, ListsRsaForKeyExchangeBeforeSignatures) {
    std::vector<ALG_ID> rsa;
    for (const auto* info : group(CRYPT_PUBKEY_ALG_OID_GROUP_ID)) {
        if (std::string(info->pszOID) == "1.2.840.113549.1.1.1") {
            rsa.push_back(info->Algid);
        }
    }
    EXPECT_EQ(rsa, (std::vector<ALG_ID>{0xA400, 0x2400}));
    EXPECT_EQ(CertOIDToAlgId("1.2.840.113549.1.1.1"), 0xA400U);
}

TEST(OidInfo, NamesTheTypeOfProviderOnlyWhereOneIsWanted) {
    EXPECT_EQ(find_oid("1.2.840.113549.1.1.5")->ExtraInfo.cbData, 4U);
    EXPECT_EQ(find_oid("1.2.840.10045.4.3.2")->ExtraInfo.cbData, 8U);
    EXPECT_EQ(word(*find_oid("1.2.840.113549.1.1.11"), 2), PROV_RSA_AES);
    EXPECT_EQ(word(*find_oid("1.2.643.7.1.1.3.2"), 2), PROV_NORVANE_GOST);
    EXPECT_EQ(find_oid("1.2.840.113549.1.1.1")->ExtraInfo.cbData, 0U);
}

TEST(OidInfo, FindsByEachKindOfKeyWithinTheGroup) {
    WCHAR name[] = u"SHA256rsa";
    ALG_ID algorithm = CALG_SHA_256;
    const auto* const by_name = CryptFindOIDInfo(CRYPT_OID_INFO_NAME_KEY, name, 0);
    ASSERT_NE(by_name, nullptr);
    EXPECT_STREQ(by_name->pszOID, "1.2.840.113549.1.1.11");
    const auto by_algorithm = [&algorithm](DWORD id) {
        return std::string(CryptFindOIDInfo(CRYPT_OID_INFO_ALGID_KEY, &algorithm, id)->pszOID);
    };
    EXPECT_EQ(by_algorithm(0), "2.16.840.1.101.3.4.2.1");
    EXPECT_EQ(by_algorithm(CRYPT_SIGN_ALG_OID_GROUP_ID | CRYPT_OID_DISABLE_SEARCH_DS_FLAG),
              "1.2.840.113549.1.1.11");
    EXPECT_EQ(find_oid("1.2.840.113549.1.1.1", CRYPT_PUBKEY_ALG_OID_GROUP_ID)->Algid, 0xA400U);

    const auto fails_with = [](DWORD error, const void* result) {
        return result == nullptr && GetLastError() == error;
    };
    EXPECT_TRUE(fails_with(CRYPT_E_NOT_FOUND, find_oid("1.2.840.113549.1.1.1", 4)));
    EXPECT_TRUE(fails_with(CRYPT_E_NOT_FOUND, find_oid("1.2.840.113549.1.1.1.")));
    EXPECT_TRUE(fails_with(CRYPT_E_NOT_FOUND, find_oid("")));
    EXPECT_TRUE(fails_with(CRYPT_E_NOT_FOUND, find_pair(CALG_SHA_256, CALG_RSA_KEYX)));
    EXPECT_TRUE(fails_with(CRYPT_E_NOT_FOUND, find_pair(CALG_RSA_SIGN, 0)));
    EXPECT_TRUE(fails_with(E_INVALIDARG, CryptFindOIDInfo(CRYPT_OID_INFO_OID_KEY, nullptr, 0)));
    EXPECT_TRUE(fails_with(E_INVALIDARG, CryptFindOIDInfo(5, name, 0)));
    EXPECT_TRUE(fails_with(CRYPT_E_NOT_FOUND, CertAlgIdToOID(0)));
    EXPECT_EQ(CertOIDToAlgId(nullptr), 0U);
    EXPECT_EQ(GetLastError(), E_INVALIDARG);
}

TEST(OidInfo, KnowsNoBrokenHashes) {
    for (const char* oid : {"1.2.840.113549.2.2", "1.2.840.113549.2.5", "1.2.840.113549.1.1.2",
                            "1.2.840.113549.1.1.4"}) {
        EXPECT_EQ(CertOIDToAlgId(oid), 0U) << oid;
    }
    for (const ALG_ID algorithm : {0x8001U, 0x8002U, 0x8003U}) {
        EXPECT_EQ(CertAlgIdToOID(algorithm), nullptr) << algorithm;
    }
}

TEST(OidInfo, EndsAnEnumerationWhenTheCallerSaysSo) {
    int calls = 0;
    const auto once = [](PCCRYPT_OID_INFO, void* count) {
        ++*static_cast<int*>(count);
        return FALSE;
    };
    EXPECT_EQ(CryptEnumOIDInfo(0, 0, &calls, once), FALSE);
    EXPECT_EQ(calls, 1);
    EXPECT_NE(CryptEnumOIDInfo(77, 0, &calls, once), FALSE);
    EXPECT_EQ(CryptEnumOIDInfo(0, 1, &calls, once), FALSE);
    EXPECT_EQ(GetLastError(), E_INVALIDARG);
    EXPECT_EQ(CryptEnumOIDInfo(0, 0, nullptr, nullptr), FALSE);
    EXPECT_EQ(calls, 1);
}
