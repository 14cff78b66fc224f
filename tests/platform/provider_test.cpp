#include "CryptoObjects.h"

#include <array>
#include <vector>

namespace {

using norvane::testing::Bytes;
using norvane::testing::hash_of;
using norvane::testing::open_provider;
using norvane::testing::OwnedProvider;

using EnumerateByIndex = BOOL (*)(DWORD, DWORD*, DWORD, DWORD*, LPSTR, DWORD*);

/// An open context or the last error, by name in both kinds of text.
DWORD error_of_opening(const char* name, DWORD type, DWORD flags = CRYPT_VERIFYCONTEXT,
                       const char* container = nullptr) {
    const auto wide = [](const char* text) {
        const std::string_view narrow = text == nullptr ? "" : text;
        return std::u16string(narrow.begin(), narrow.end());
    };
    const std::u16string wide_name = wide(name);
    const std::u16string wide_container = wide(container);
    const auto result = [](BOOL done, HCRYPTPROV provider) {
        EXPECT_EQ(done != FALSE, provider != 0);
        const OwnedProvider owner(provider);
        return done != FALSE ? ERROR_SUCCESS : GetLastError();
    };
    HCRYPTPROV provider = 0;
    const BOOL done = CryptAcquireContextA(&provider, container, name, type, flags);
    const DWORD error = result(done, provider);
    HCRYPTPROV provider_w = 0;
    const BOOL done_w =
        CryptAcquireContextW(&provider_w, container == nullptr ? nullptr : wide_container.c_str(),
                             name == nullptr ? nullptr : wide_name.c_str(), type, flags);
    EXPECT_EQ(result(done_w, provider_w), error);
    return error;
}

std::vector<ALG_ID> algorithms(HCRYPTPROV provider) {
    std::vector<ALG_ID> all;
    PROV_ENUMALGS_EX answer{};
    DWORD size = sizeof answer;
    for (DWORD flags = CRYPT_FIRST;
         CryptGetProvParam(provider, PP_ENUMALGS_EX, reinterpret_cast<BYTE*>(&answer), &size,
                           flags) != FALSE;
         flags = CRYPT_NEXT) {
        EXPECT_EQ(size, 88U);
        EXPECT_EQ(answer.dwNameLen, std::string(answer.szName).size() + 1);
        EXPECT_EQ(answer.dwLongNameLen, std::string(answer.szLongName).size() + 1);
        all.push_back(answer.aiAlgid);
    }
    EXPECT_EQ(GetLastError(), ERROR_NO_MORE_ITEMS);
    return all;
}

} // namespace

TEST(Providers, AreEnumeratedUnderTheProtocolOfSizes) {
    for (const EnumerateByIndex enumerate : {CryptEnumProvidersA, CryptEnumProviderTypesA}) {
        DWORD index = 0;
        DWORD type = 0;
        DWORD size = 0;
        for (; enumerate(index, nullptr, 0, &type, nullptr, &size) != FALSE; ++index) {
            std::string name(size, 'x');
            DWORD too_small = size - 1;
            type = 0;
            EXPECT_EQ(enumerate(index, nullptr, 0, &type, name.data(), &too_small), FALSE);
            EXPECT_EQ(GetLastError(), ERROR_MORE_DATA);
            EXPECT_EQ(too_small, size);
            EXPECT_NE(type, 0U);
            EXPECT_EQ(name, std::string(size, 'x'));
            EXPECT_NE(enumerate(index, nullptr, 0, &type, name.data(), &size), FALSE);
            EXPECT_EQ(name.find('\0'), size - 1);
            // What is listed can be opened.
            EXPECT_EQ(error_of_opening(nullptr, type), ERROR_SUCCESS);
            if (enumerate == CryptEnumProvidersA) {
                EXPECT_EQ(error_of_opening(name.c_str(), type), ERROR_SUCCESS);
            }
        }
        EXPECT_EQ(GetLastError(), ERROR_NO_MORE_ITEMS);
        EXPECT_EQ(index, 3U);

        DWORD reserved = 0;
        EXPECT_EQ(enumerate(0, &reserved, 0, &type, nullptr, &size), FALSE);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
        EXPECT_EQ(enumerate(0, nullptr, 1, &type, nullptr, &size), FALSE);
        EXPECT_EQ(GetLastError(), NTE_BAD_FLAGS);
        EXPECT_EQ(enumerate(0, nullptr, 0, nullptr, nullptr, &size), FALSE);
        EXPECT_EQ(enumerate(0, nullptr, 0, &type, nullptr, nullptr), FALSE);
    }
}

TEST(Providers, OpenByTypeAndByNameForVerificationOnly) {
    constexpr const char* gost = "norvane GOST provider over botan";
    const struct {
        const char* name;
        DWORD type;
        DWORD flags;
        const char* container;
        DWORD error;
    } cases[] = {
        {nullptr, PROV_RSA_FULL, CRYPT_VERIFYCONTEXT, nullptr, ERROR_SUCCESS},
        {nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT, "", ERROR_SUCCESS},
        {gost, PROV_NORVANE_GOST, CRYPT_VERIFYCONTEXT, nullptr, ERROR_SUCCESS},
        {gost, PROV_RSA_FULL, CRYPT_VERIFYCONTEXT, nullptr, NTE_PROV_TYPE_NO_MATCH},
        {gost, 2, CRYPT_VERIFYCONTEXT, nullptr, NTE_PROV_TYPE_NOT_DEF},
        {"", PROV_RSA_FULL, CRYPT_VERIFYCONTEXT, nullptr, NTE_KEYSET_NOT_DEF},
        {"Norvane", PROV_RSA_FULL, CRYPT_VERIFYCONTEXT, nullptr, NTE_KEYSET_NOT_DEF},
        {nullptr, 0, CRYPT_VERIFYCONTEXT, nullptr, NTE_BAD_PROV_TYPE},
        {nullptr, 1000, CRYPT_VERIFYCONTEXT, nullptr, NTE_BAD_PROV_TYPE},
        {nullptr, 999, CRYPT_VERIFYCONTEXT, nullptr, NTE_PROV_TYPE_NOT_DEF},
        {nullptr, PROV_RSA_FULL, 0, nullptr, NTE_BAD_FLAGS},
        {nullptr, PROV_RSA_FULL, CRYPT_VERIFYCONTEXT | 8, nullptr, NTE_BAD_FLAGS},
        {nullptr, PROV_RSA_FULL, CRYPT_VERIFYCONTEXT, "mine", NTE_BAD_KEYSET},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(error_of_opening(test.name, test.type, test.flags, test.container), test.error)
            << test.type << " " << (test.name == nullptr ? "default" : test.name);
    }
    EXPECT_EQ(CryptAcquireContextA(nullptr, nullptr, nullptr, 1, CRYPT_VERIFYCONTEXT), FALSE);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST(Providers, TellTheirAlgorithmsOneByOne) {
    const OwnedProvider provider = open_provider();
    EXPECT_EQ(algorithms(provider),
              (std::vector<ALG_ID>{CALG_SHA1, CALG_SHA_256, CALG_SHA_384, CALG_SHA_512,
                                   CALG_RSA_SIGN, CALG_RSA_KEYX, CALG_DSS_SIGN, CALG_ECDSA}));
    EXPECT_EQ(algorithms(open_provider(PROV_NORVANE_GOST)).size(), 7U);

    const auto ask = [&provider](BYTE* buffer, DWORD size, DWORD flags) {
        const BOOL done = CryptGetProvParam(provider, PP_ENUMALGS_EX, buffer, &size, flags);
        EXPECT_EQ(size, 88U);
        return done != FALSE ? ERROR_SUCCESS : GetLastError();
    };
    PROV_ENUMALGS_EX answer{};
    auto* const buffer = reinterpret_cast<BYTE*>(&answer);
    EXPECT_EQ(ask(buffer, 88, CRYPT_FIRST), ERROR_SUCCESS);
    EXPECT_EQ(ask(nullptr, 0, 0), ERROR_SUCCESS); // These two do not go on.
    EXPECT_EQ(ask(buffer, 87, 0), ERROR_MORE_DATA);
    EXPECT_EQ(ask(buffer, 88, 0), ERROR_SUCCESS);
    EXPECT_EQ(answer.aiAlgid, CALG_SHA_256);

    std::array<char, 64> name{};
    DWORD size = name.size();
    EXPECT_NE(CryptGetProvParam(provider, PP_NAME, reinterpret_cast<BYTE*>(name.data()), &size, 0),
              FALSE);
    EXPECT_EQ(std::string(name.data()).size() + 1, size);
    DWORD type = 0;
    size = sizeof type;
    EXPECT_NE(CryptGetProvParam(provider, PP_PROVTYPE, reinterpret_cast<BYTE*>(&type), &size, 0),
              FALSE);
    EXPECT_EQ(type, PROV_RSA_FULL);
    EXPECT_EQ(CryptGetProvParam(provider, PP_PROVTYPE, nullptr, &size, CRYPT_FIRST), FALSE);
    EXPECT_EQ(GetLastError(), NTE_BAD_FLAGS);
    EXPECT_EQ(CryptGetProvParam(provider, 99, nullptr, &size, 0), FALSE);
    EXPECT_EQ(GetLastError(), NTE_BAD_TYPE);
    EXPECT_EQ(CryptGetProvParam(provider, PP_NAME, nullptr, nullptr, 0), FALSE);
}

TEST(Providers, LiveUntilTheirLastReferenceGoes) {
    HCRYPTPROV provider = 0;
    ASSERT_NE(CryptAcquireContextA(&provider, nullptr, nullptr, PROV_RSA_FULL, CRYPT_VERIFYCONTEXT),
              FALSE);
    EXPECT_NE(CryptContextAddRef(provider, nullptr, 0), FALSE);
    EXPECT_EQ(CryptContextAddRef(provider, nullptr, 1), FALSE);
    EXPECT_EQ(GetLastError(), NTE_BAD_FLAGS);
    EXPECT_EQ(CryptReleaseContext(provider, 1), FALSE);
    EXPECT_EQ(GetLastError(), NTE_BAD_FLAGS);
    EXPECT_NE(CryptReleaseContext(provider, 0), FALSE);
    const auto hash = hash_of(provider, CALG_SHA_256, {1}); // One reference is left.
    EXPECT_NE(CryptReleaseContext(provider, 0), FALSE);
    EXPECT_NE(CryptHashData(hash, nullptr, 0, 0), FALSE) << "a hash outlives the context";
}

TEST(Providers, RefuseHandlesOfAnotherKindAndBadArguments) {
    const OwnedProvider provider = open_provider();
    const auto hash = hash_of(provider, CALG_SHA_256, {});
    const auto fails_with = [](DWORD error, BOOL result) {
        return result == FALSE && GetLastError() == error;
    };
    HCRYPTHASH made = 0;
    DWORD size = 0;
    for (const std::uintptr_t handle :
         {std::uintptr_t{0}, std::uintptr_t{hash}, std::uintptr_t{provider} + 1}) {
        EXPECT_TRUE(fails_with(NTE_BAD_UID, CryptReleaseContext(handle, 0)));
        EXPECT_TRUE(fails_with(NTE_BAD_UID, CryptContextAddRef(handle, nullptr, 0)));
        EXPECT_TRUE(fails_with(NTE_BAD_UID, CryptGetProvParam(handle, PP_NAME, nullptr, &size, 0)));
        EXPECT_TRUE(fails_with(NTE_BAD_UID, CryptCreateHash(handle, CALG_SHA1, 0, 0, &made)));
        EXPECT_TRUE(fails_with(
            NTE_BAD_UID, CryptImportPublicKeyInfoEx(handle, 1, nullptr, 0, 0, nullptr, &made)));
        EXPECT_TRUE(fails_with(NTE_BAD_KEY, CryptDestroyKey(handle)));
        EXPECT_TRUE(
            fails_with(NTE_BAD_KEY, CryptVerifySignatureW(hash, nullptr, 0, handle, nullptr, 0)));
    }
    for (const std::uintptr_t handle : {std::uintptr_t{0}, std::uintptr_t{provider}}) {
        EXPECT_TRUE(fails_with(NTE_BAD_HASH, CryptHashData(handle, nullptr, 0, 0)));
        EXPECT_TRUE(fails_with(NTE_BAD_HASH, CryptDestroyHash(handle)));
        EXPECT_TRUE(
            fails_with(NTE_BAD_HASH, CryptVerifySignatureW(handle, nullptr, 0, 0, nullptr, 0)));
    }
    EXPECT_TRUE(fails_with(NTE_BAD_ALGID, CryptCreateHash(provider, 0x8003, 0, 0, &made)));
    EXPECT_TRUE(fails_with(NTE_BAD_ALGID, CryptCreateHash(provider, CALG_RSA_SIGN, 0, 0, &made)));
    EXPECT_TRUE(fails_with(NTE_BAD_ALGID,
                           CryptCreateHash(provider, CALG_NORVANE_GOST_R3411_94, 0, 0, &made)));
    EXPECT_TRUE(fails_with(NTE_BAD_KEY, CryptCreateHash(provider, CALG_SHA1, hash, 0, &made)));
    EXPECT_TRUE(fails_with(NTE_BAD_FLAGS, CryptCreateHash(provider, CALG_SHA1, 0, 1, &made)));
    EXPECT_TRUE(
        fails_with(ERROR_INVALID_PARAMETER, CryptCreateHash(provider, CALG_SHA1, 0, 0, nullptr)));
    EXPECT_TRUE(fails_with(ERROR_INVALID_PARAMETER, CryptHashData(hash, nullptr, 1, 0)));
    EXPECT_TRUE(fails_with(NTE_BAD_FLAGS, CryptHashData(hash, nullptr, 0, 1)));
    EXPECT_EQ(made, 0U);
}
