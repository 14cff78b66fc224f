#include "CryptoObjects.h"
#include "support/ConfiguredProcess.h"

namespace {

using norvane::testing::open_provider;
using norvane::testing::passes_when_configured;

void expect_sha1(bool allowed) {
    for (const char* oid :
         {"1.3.14.3.2.26", "1.2.840.113549.1.1.5", "1.2.840.10040.4.3", "1.2.840.10045.4.1"}) {
        EXPECT_EQ(CertOIDToAlgId(oid), allowed ? CALG_SHA1 : 0) << oid;
    }
    EXPECT_EQ(CertAlgIdToOID(CALG_SHA1) != nullptr, allowed);
    EXPECT_EQ(CertOIDToAlgId("1.2.840.113549.1.1.11"), CALG_SHA_256);

    const auto provider = open_provider();
    HCRYPTHASH hash = 0;
    EXPECT_EQ(CryptCreateHash(provider, CALG_SHA1, 0, 0, &hash) != FALSE, allowed);
    const norvane::testing::OwnedHash owner(hash);
}

} // namespace

TEST(Sha1Switch, TakesSha1OutOfTablesAndProviders) {
    EXPECT_TRUE(passes_when_configured("[crypto]\nsha1 = off\n", [] { expect_sha1(false); }));
    EXPECT_TRUE(passes_when_configured("", [] { expect_sha1(true); }));
}
