#include "retrieval/Retrieval.h"
#include "support/LdapServer.h"

namespace norvane::testing {
namespace {

TEST(LdapRetrieval, UrlsGiveTheValuesOfTheirAttributes) {
    if (!LdapServer::is_installed())
        GTEST_SKIP() << "slapd is not installed";
    const auto checks = [] {
        const Bytes a = crl_of_day(1, "A");
        const Bytes b = crl_of_day(2, "B");
        const Bytes delta = crl_of_day(3, "A", {delta_crl_indicator(integer(1))});
        const Bytes certificate = CertificateBuilder{}.sign(Key::ec(0));
        const LdapServer server(
            {{"cn=A",
              {"cRLDistributionPoint"},
              {{"certificateRevocationList;binary", {a, b}},
               {"deltaRevocationList;binary", {delta}}}},
             {"cn=B", {"cRLDistributionPoint"}, {{"certificateRevocationList;binary", {b}}}},
             {"ou=CA", {"organizationalUnit", "pkiCA"}, {{"cACertificate;binary", {certificate}}}},
             {"cn=empty", {"cRLDistributionPoint"}, {}}});
        const HttpServer silent(HttpServer::Accepts::nothing);
        const HttpServer no_ldap;
        const std::string crls = "certificateRevocationList;binary";
        const struct {
            std::string url;
            Retrieved crls;
            Retrieved certificates;
        } rows[] = {
            {server.url("cn=A,o=Test?" + crls), objects({a, b}), failure(CRYPT_E_NO_MATCH)},
            {server.url("cn=A,o=Test?certificateRevocationList"), objects({a, b}),
             failure(CRYPT_E_NO_MATCH)},
            {server.url("cn=A,o=Test"), objects({a, b, delta}), failure(CRYPT_E_NOT_FOUND)},
            {server.url("ou=CA,o=Test"), failure(CRYPT_E_NOT_FOUND), objects({certificate})},
            {server.url("o%3dTest?" + crls + "?sub?(cn=B)"), objects({b}),
             failure(CRYPT_E_NO_MATCH)},
            {server.url("o=Test?" + crls + "?one?(%26(cn=*)(!(cn=B)))"), objects({a, b}),
             failure(CRYPT_E_NO_MATCH)},
            {server.url("o=Test?" + crls + "?base?(cn=B)"), failure(CRYPT_E_NOT_FOUND),
             failure(CRYPT_E_NOT_FOUND)},
            {server.url("cn=empty,o=Test?" + crls), failure(CRYPT_E_NOT_FOUND),
             failure(CRYPT_E_NOT_FOUND)},
            {server.url("cn=none,o=Test?" + crls), failure(CRYPT_E_NOT_FOUND),
             failure(CRYPT_E_NOT_FOUND)},
            {server.url("nonsense?" + crls), failure(ERROR_INTERNET_INVALID_URL),
             failure(ERROR_INTERNET_INVALID_URL)},
            {server.url("cn=A,o=Test?" + crls + "?base?(("), failure(ERROR_INTERNET_INVALID_URL),
             failure(ERROR_INTERNET_INVALID_URL)},
            {"ldap:///cn=A,o=Test?" + crls, failure(ERROR_INTERNET_INVALID_URL),
             failure(ERROR_INTERNET_INVALID_URL)},
            {"ldap://127.0.0.1:1/o=Test", failure(ERROR_INTERNET_CANNOT_CONNECT),
             failure(ERROR_INTERNET_CANNOT_CONNECT)},
            {"ldaps" + server.url("o=Test").substr(4), failure(ERROR_INTERNET_CANNOT_CONNECT),
             failure(ERROR_INTERNET_CANNOT_CONNECT)},
        };
        for (const auto& row : rows) {
            EXPECT_EQ(retrieve(row.url), row.crls) << row.url;
            EXPECT_EQ(retrieve_certificates(row.url), row.certificates) << row.url;
            const DWORD absent = row.crls.error == 0 ? 0 : CRYPT_E_NOT_FOUND;
            EXPECT_EQ(retrieve(row.url, cached_objects), (Retrieved{absent, row.crls.objects}))
                << row.url;
        }

        constexpr DWORD limit_ms = 300;
        for (const std::string scheme : {"ldap", "ldaps"}) {
            const auto start = Clock::now();
            EXPECT_EQ(retrieve(scheme + silent.url("/o=Test").substr(4), all_objects, limit_ms),
                      failure(ERROR_TIMEOUT));
            EXPECT_LT(Clock::now() - start, milliseconds(limit_ms + 100)) << scheme;
        }
    };
    const TemporaryFolder folder;
    EXPECT_TRUE(passes_with_cache(folder, checks));
}

TEST(LdapRetrieval, AResponseBeyondTheLimitIsRefused) {
    if (!LdapServer::is_installed())
        GTEST_SKIP() << "slapd is not installed";
    const auto checks = [] {
        const Bytes large = large_crl(4000, Key::ec(0));
        const LdapServer server(
            {{"cn=A", {"cRLDistributionPoint"}, {{"certificateRevocationList;binary", {large}}}}});
        EXPECT_EQ(retrieve(server.url("cn=A,o=Test")), failure(ERROR_FILE_TOO_LARGE));
    };
    const TemporaryFolder folder;
    EXPECT_TRUE(passes_with_cache(folder, checks, "response_limit = 190000\n"));
}

} // namespace
} // namespace norvane::testing
