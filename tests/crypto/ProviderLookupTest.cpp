#include "crypto/ProviderLookup.h"
#include "crypto/OidInfoLookup.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace norvane {
namespace {

/// The type of the provider that is found; 0 if there is none.
DWORD type_for(ALG_ID algorithm) {
    const HCRYPTPROV provider = find_provider_for_algid(algorithm);
    DWORD type = 0;
    DWORD size = sizeof type;
    CryptGetProvParam(provider, PP_PROVTYPE, reinterpret_cast<BYTE*>(&type), &size, 0);
    EXPECT_EQ(provider != 0, CryptReleaseContext(provider, 0) != FALSE);
    return type;
}

std::vector<DWORD> told_sizes;

/// Walks the installed providers and takes note of them.
struct Noted : CCryptProvidersEnumT<WCHAR> {
    using CCryptProvidersEnumT::CCryptProvidersEnumT;
    bool on_provider(const WCHAR* name, DWORD type) override {
        seen.emplace_back(name, type);
        return seen.size() < 5;
    }
    std::vector<std::pair<std::u16string, DWORD>> seen;
};

/// Asks for `needed` bytes at index 1, whatever it is given.
template <DWORD needed>
BOOL never_enough(DWORD index, DWORD*, DWORD, DWORD* type, LPSTR name, DWORD* size) {
    told_sizes.push_back(*size);
    if (index == 1) {
        *size = needed;
        SetLastError(ERROR_MORE_DATA);
        return FALSE;
    }
    *type = 7;
    std::ranges::copy("\xE9!", name);
    return TRUE;
}

} // namespace

TEST(ProviderLookup, TakesTheFirstProviderWithTheAlgorithmAndTheBaseProviderForNone) {
    EXPECT_EQ(type_for(CALG_ECDSA), PROV_RSA_FULL);
    EXPECT_EQ(type_for(CALG_NORVANE_GOST_R3411_94), PROV_NORVANE_GOST);
    EXPECT_EQ(type_for(0), PROV_RSA_FULL);
    EXPECT_EQ(type_for(99), 0U) << "the last one asked is no hit";
}

TEST(ProviderLookup, RetriesAnIndexOnceWithTwiceTheRoom) {
    const struct {
        EnumerateByIndex enumerate;
        std::vector<DWORD> sizes;
    } cases[] = {{never_enough<700>, {512, 512, 1400}}, // The second refusal ends the walk.
                 {never_enough<512>, {512, 512}}};      // It has that much already.
    for (const auto& test : cases) {
        told_sizes.clear();
        Noted providers(test.enumerate);
        EXPECT_EQ(providers.walk(), 0x800700EA);
        EXPECT_EQ(told_sizes, test.sizes);
        ASSERT_EQ(providers.seen.size(), 1U);
        EXPECT_EQ(providers.seen[0], std::pair(std::u16string(u"\u00E9!"), DWORD{7}));
    }
}

TEST(ProviderLookup, FindsTheSignatureAlgorithmOfAKeyAndAHash) {
    const auto found = [](const char* key_oid, const char* hash_oid) {
        const CRYPT_OID_INFO* const info = find_signature_oid_info(key_oid, hash_oid);
        return std::string(info == nullptr ? "none" : info->pszOID);
    };
    constexpr const char* rsa = "1.2.840.113549.1.1.1"; // Its entry for key exchange is first.
    EXPECT_EQ(found(rsa, "2.16.840.1.101.3.4.2.1"), "1.2.840.113549.1.1.11");
    EXPECT_EQ(found("1.2.643.2.2.19", "1.2.643.2.2.9"), "1.2.643.2.2.3");
    EXPECT_EQ(found("1.2.643.2.2.19", "2.16.840.1.101.3.4.2.1"), "none");
    EXPECT_EQ(found(rsa, "1.9"), "none");
}

} // namespace norvane
