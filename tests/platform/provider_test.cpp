#include "CryptoObjects.h"

#include <string>

namespace {

using norvane::testing::hash_of;
using norvane::testing::OwnedProvider;

using EnumerateByIndex = BOOL (*)(DWORD, DWORD*, DWORD, DWORD*, LPSTR, DWORD*);

bool opens(const char* name, DWORD type) {
    HCRYPTPROV provider = 0;
    const BOOL done = CryptAcquireContextA(&provider, nullptr, name, type, CRYPT_VERIFYCONTEXT);
    const OwnedProvider owner(provider);
    return done != FALSE;
}

bool fails_with(DWORD error, BOOL result) { return result == FALSE && GetLastError() == error; }

} // namespace

TEST(Providers, AreEnumeratedUnderTheProtocolOfSizesAndOpened) {
    for (const EnumerateByIndex enumerate : {CryptEnumProvidersA, CryptEnumProviderTypesA}) {
        DWORD index = 0;
        DWORD type = 0;
        DWORD size = 0;
        for (; enumerate(index, nullptr, 0, &type, nullptr, &size) != FALSE; ++index) {
            std::string name(size, 'x');
            DWORD too_small = size - 1;
            EXPECT_TRUE(fails_with(ERROR_MORE_DATA,
                                   enumerate(index, nullptr, 0, &type, name.data(), &too_small)));
            EXPECT_EQ(too_small, size);
            EXPECT_NE(enumerate(index, nullptr, 0, &type, name.data(), &size), FALSE);
            EXPECT_EQ(name.find('\0'), size - 1);
            EXPECT_TRUE(opens(enumerate == CryptEnumProvidersA ? name.c_str() : nullptr, type));
            EXPECT_FALSE(opens(name.c_str(), type + 1));
        }
        EXPECT_EQ(GetLastError(), ERROR_NO_MORE_ITEMS);
        EXPECT_EQ(index, 3U);
    }
}

TEST(Providers, LiveUntilTheirLastReferenceGoesAndKnowOnlyTheirOwnHandles) {
    HCRYPTPROV provider = 0;
    ASSERT_NE(CryptAcquireContextA(&provider, nullptr, nullptr, PROV_RSA_FULL, CRYPT_VERIFYCONTEXT),
              FALSE);
    EXPECT_NE(CryptContextAddRef(provider, nullptr, 0), FALSE);
    EXPECT_NE(CryptReleaseContext(provider, 0), FALSE);
    const auto hash = hash_of(provider, CALG_SHA_256, {1}); // One reference is left.
    EXPECT_TRUE(fails_with(NTE_BAD_HASH, CryptDestroyHash(provider)));
    EXPECT_TRUE(fails_with(NTE_BAD_UID, CryptReleaseContext(hash, 0)));
    EXPECT_TRUE(fails_with(NTE_BAD_KEY, CryptDestroyKey(hash)));
    EXPECT_NE(CryptReleaseContext(provider, 0), FALSE);
    EXPECT_NE(CryptHashData(hash, nullptr, 0, 0), FALSE) << "a hash outlives the context";
}
