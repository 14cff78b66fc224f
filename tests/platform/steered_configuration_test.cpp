#include "CryptoObjects.h"
#include "support/ConfiguredProcess.h"

namespace {

using norvane::testing::passes_when_configured;
using norvane::testing::TemporaryFolder;

void expect_sha1(bool allowed) {
    for (const char* oid :
         {"1.3.14.3.2.26", "1.2.840.113549.1.1.5", "1.2.840.10040.4.3", "1.2.840.10045.4.1"}) {
        EXPECT_EQ(CertOIDToAlgId(oid), allowed ? CALG_SHA1 : 0) << oid;
    }
    EXPECT_EQ(CertAlgIdToOID(CALG_SHA1) != nullptr, allowed);
    EXPECT_EQ(CertOIDToAlgId("1.2.840.113549.1.1.11"), CALG_SHA_256);

    const auto provider = norvane::testing::open_provider();
    HCRYPTHASH hash = 0;
    EXPECT_EQ(CryptCreateHash(provider, CALG_SHA1, 0, 0, &hash) != FALSE, allowed);
    const norvane::testing::OwnedHash owner(hash);
}

DWORD outcome(BOOL result) { return result != 0 ? ERROR_SUCCESS : GetLastError(); }
DWORD set(LPCSTR section, LPCSTR key, LPCSTR value) {
    return outcome(NorvaneSetConfiguration(section, key, value));
}

BOOL note(LPCSTR file, DWORD line, LPCSTR text, void* argument) {
    *static_cast<std::string*>(argument) +=
        std::filesystem::path(file).filename().string() + ":" + std::to_string(line) + ": " + text;
    return TRUE;
}

} // namespace

TEST(Sha1Switch, TakesSha1OutOfTablesAndProviders) {
    EXPECT_TRUE(passes_when_configured("[crypto]\nsha1 = off\n", [] { expect_sha1(false); }));
    EXPECT_TRUE(passes_when_configured("", [] { expect_sha1(true); }));
}

TEST(SteeredConfiguration, StandsOverTheFilesUntilItIsReadAndIsCheckedAtOnce) {
    const TemporaryFolder folder;
    const std::string named = folder.write("named", "[crypto]\nsha1 = on\n[none]\n");
    EXPECT_TRUE(passes_when_configured("[bad]\n", [&] {
        EXPECT_EQ(set("Crypto", "SHA1", "on"), ERROR_SUCCESS);
        EXPECT_EQ(set("crypto", "sha1", "off"), ERROR_SUCCESS);
        EXPECT_EQ(set("crypto", "sha1", "maybe"), ERROR_INVALID_DATA);
        EXPECT_EQ(set("registry", "x", "dword:4"), ERROR_NOT_FOUND);
        EXPECT_EQ(set("retrieval", "none", "4"), ERROR_NOT_FOUND);
        EXPECT_EQ(set("stores", "Root", nullptr), E_INVALIDARG);
        EXPECT_EQ(outcome(NorvaneSetConfigurationFile("")), E_INVALIDARG);
        EXPECT_EQ(outcome(NorvaneSetConfigurationFile(named.c_str())), ERROR_SUCCESS);

        expect_sha1(false);
        std::string problems;
        EXPECT_TRUE(NorvaneEnumConfigurationProblems(note, &problems));
        EXPECT_EQ(problems, "named:3: there is no section \"none\"")
            << "and nothing of the file of the environment";
        EXPECT_EQ(set("crypto", "sha1", "on"), E_ACCESSDENIED);
        EXPECT_EQ(outcome(NorvaneSetConfigurationFile("/x")), E_ACCESSDENIED);
    }));
}
