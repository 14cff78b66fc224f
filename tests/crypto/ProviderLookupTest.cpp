#include "crypto/ProviderLookup.h"
#include "crypto/OidInfoLookup.h"

#include "FakePlatform.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace norvane {
namespace {

using Log = std::vector<std::string>;

constexpr ALG_ID wanted = 0x2400;

/// The status of the CAtlException that `operation` throws; 0 if it throws none.
template <class Operation>
std::uint32_t status_of(Operation operation) {
    try {
        static_cast<void>(operation());
    } catch (const CAtlException& error) {
        return error.status();
    }
    return 0;
}

class ProviderLookup : public ::testing::Test {
  protected:
    ProviderLookup() { fake::reset(); }
    fake::Platform& platform() { return fake::platform(); }

    /// How often the log has this call.
    std::ptrdiff_t count(const std::string& call) {
        return std::ranges::count(platform().log, call);
    }
};

} // namespace

TEST_F(ProviderLookup, AsksDefaultProvidersFirstAndAllOthersThen) {
    platform().providers = {{1, "default of 1", {5, 6}},
                            {1, "other of 1", {7, wanted}},
                            {2, "default of 2", {8}},
                            {2, "other of 2", {wanted, 9}}};
    const HCRYPTPROV by_default = find_provider_for_algid(8);
    ASSERT_NE(by_default, 0U);
    EXPECT_EQ(platform().log, (Log{"EnumProviderTypes", "Acquire default of 1", "ReleaseContext",
                                   "EnumProviderTypes", "Acquire default of 2",
                                   "ReleaseContext"})); // The search's own reference.
    EXPECT_EQ(platform().open, 1);
    CryptReleaseContext(by_default, 0);

    platform().log.clear();
    const HCRYPTPROV by_name = find_provider_for_algid(wanted);
    ASSERT_NE(by_name, 0U);
    EXPECT_EQ(count("Acquire other of 1"), 1);
    EXPECT_EQ(count("Acquire other of 2"), 0);
    CryptReleaseContext(by_name, 0);

    EXPECT_EQ(find_provider_for_algid(99), 0U) << "the last one asked is no hit";
    EXPECT_EQ(platform().open, 0);
}

TEST_F(ProviderLookup, TakesTheBaseProviderForNoAlgorithmWithoutAsking) {
    EXPECT_EQ(status_of([] { return find_provider_for_algid(0); }), NTE_PROV_TYPE_NOT_DEF);
    platform().providers = {{2, "first", {0}}, {PROV_RSA_FULL, "base", {}}};
    platform().log.clear();
    const HCRYPTPROV provider = find_provider_for_algid(0);
    EXPECT_EQ(platform().log, Log{"Acquire base"});
    CryptReleaseContext(provider, 0);
    EXPECT_EQ(platform().open, 0);
}

TEST_F(ProviderLookup, EndsWithTheFirstProviderThatFails) {
    const struct {
        const char* call;
        DWORD error;
        std::uint32_t status;
    } cases[] = {{"Acquire first", NTE_PROV_DLL_NOT_FOUND, NTE_PROV_DLL_NOT_FOUND},
                 {"Acquire first", ERROR_ACCESS_DENIED, 0x80070005},
                 {"Param first", NTE_FAIL, NTE_FAIL},
                 {"Param first", ERROR_MORE_DATA, 0x800700EA}};
    for (const auto& test : cases) {
        SCOPED_TRACE(test.call);
        fake::reset();
        platform().providers = {{1, "first", {5}}, {2, "second", {wanted}}};
        platform().failures = {{test.call, test.error}};
        EXPECT_EQ(status_of([] { return find_provider_for_algid(wanted); }), test.status);
        EXPECT_EQ(count("Acquire second"), 0);
        EXPECT_EQ(platform().open, 0);
    }
}

TEST_F(ProviderLookup, GoesOnWithTheSecondWalkWhenTheFirstOneEndsInAnError) {
    platform().providers = {{1, "first", {wanted}}};
    platform().failures = {{"EnumProviderTypes", NTE_FAIL}};
    const HCRYPTPROV provider = find_provider_for_algid(wanted);
    EXPECT_NE(provider, 0U);
    CryptReleaseContext(provider, 0);
}

TEST_F(ProviderLookup, FindsProvidersWhoseNamesOutgrowTheBuffer) {
    // One more than fits, with the terminator; and one longer than the room made for that.
    platform().providers = {{1, "default", {}},
                            {1, std::string(512, 'a'), {}},
                            {1, std::string(1027, 'b'), {}},
                            {1, std::string(511, 'c'), {wanted}}};
    const HCRYPTPROV provider = find_provider_for_algid(wanted);
    EXPECT_NE(provider, 0U);
    EXPECT_EQ(count("EnumProviders"), 4 + 2);
    CryptReleaseContext(provider, 0);
    EXPECT_EQ(platform().open, 0);
}

namespace {

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

TEST_F(ProviderLookup, RetriesAnIndexOnceWithTwiceTheRoom) {
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
    Noted endless([](DWORD, DWORD*, DWORD, DWORD*, LPSTR name, DWORD*) {
        *name = '\0';
        return TRUE;
    });
    EXPECT_EQ(endless.walk(), 0U);
    EXPECT_EQ(endless.seen.size(), 5U) << "the callback ends the walk";
}

TEST_F(ProviderLookup, FindsTheSignatureAlgorithmOfAKeyAndAHash) {
    constexpr DWORD key = CRYPT_PUBKEY_ALG_OID_GROUP_ID;
    constexpr DWORD signature = CRYPT_SIGN_ALG_OID_GROUP_ID;
    platform().oids = {{CRYPT_HASH_ALG_OID_GROUP_ID, "1.1", 0x8001},
                       {CRYPT_HASH_ALG_OID_GROUP_ID, "1.2", 0x8002},
                       {key, "2.1", 0xA400},
                       {key, "2.1", 0x2400},
                       {key, "2.1", 0x2401},
                       {key, "2.2", 0xA401},
                       {signature, "3.1", 0x8001, {0x2400}},
                       {signature, "3.2", 0x8002, {0xA400}},
                       {signature, "3.3", 0x8002, {0x2401}},
                       {signature, "2.3", 0x2402, {0x2402}}};
    const auto found = [](const char* key_oid, const char* hash_oid) {
        const CRYPT_OID_INFO* const info = find_signature_oid_info(key_oid, hash_oid);
        return std::string(info == nullptr ? "none" : info->pszOID);
    };
    EXPECT_EQ(found("2.1", "1.1"), "3.1") << "the entry for key exchange stands first";
    EXPECT_EQ(found("2.1", "1.2"), "none") << "the first entry of the class decides";
    EXPECT_EQ(found("2.2", "1.1"), "none") << "no entry of the signature class";
    EXPECT_EQ(found("2.3", "1.1"), "none") << "in another group";
    EXPECT_EQ(found("2.10", "1.1"), "none");
    EXPECT_EQ(found("2.1", "1.9"), "none");
}

} // namespace norvane
