#include "retrieval/Retrieval.h"
#include "support/LdapServer.h"

namespace norvane::testing {
namespace {

TEST(LdapRetrieval, UrlsGiveTheValuesOfTheirAttributesWithinTheLimits) {
    if (!LdapServer::is_installed())
        GTEST_SKIP() << "slapd is not installed";
    const auto checks = [] {
        const Bytes a = crl_of(260101, "A");
        const Bytes b = crl_of(260102, "B");
        const Bytes delta = crl_of(260103, "A", {delta_crl_indicator(integer(1))});
        const Bytes certificate = CertificateBuilder{}.sign(Key::ec(0));
        const std::string crls = "certificateRevocationList;binary";
        const std::vector<std::string> point = {"cRLDistributionPoint"};
        const LdapServer server(
            {{"cn=A", point, {{crls, {a, b}}, {"deltaRevocationList;binary", {delta}}}},
             {"cn=B", point, {{crls, {b}}}},
             {"cn=empty", point, {}},
             {"cn=large", point, {{crls, {large_crl(4000, Key::ec(0))}}}},
             {"ou=CA",
              {"organizationalUnit", "pkiCA"},
              {{"cACertificate;binary", {certificate}}}}});
        const struct {
            std::string url;
            LPCSTR kind;
            Retrieved told;
        } rows[] = {
            {server.url("cn=A,o=Test?certificateRevocationList"), CONTEXT_OID_CRL, objects({a, b})},
            {server.url("cn=A,o=Test?" + crls), CONTEXT_OID_CERTIFICATE, failure(CRYPT_E_NO_MATCH)},
            {server.url("cn=A,o=Test"), CONTEXT_OID_CRL, objects({a, b, delta})},
            {server.url("ou=CA,o=Test"), CONTEXT_OID_CERTIFICATE, objects({certificate})},
            {server.url("ou=CA,o=Test"), CONTEXT_OID_CRL, failure(CRYPT_E_NOT_FOUND)},
            {server.url("o%3dTest?" + crls + "?sub?(cn=B)"), CONTEXT_OID_CRL, objects({b})},
            {server.url("o=Test?" + crls + "?one?(%26(cn=*)(!(cn=B))(!(cn=large)))"),
             CONTEXT_OID_CRL, objects({a, b})},
        };
        for (const auto& [url, kind, told] : rows) {
            EXPECT_EQ(retrieve(url, all_objects, ample_ms, kind), told) << url;
            EXPECT_EQ(retrieve(url, cached_objects, ample_ms, kind),
                      told.error == 0 ? told : failure(CRYPT_E_NOT_FOUND));
        }

        const HttpServer silent(HttpServer::Accepts::nothing);
        const std::pair<std::string, DWORD> faults[] = {
            {server.url("o=Test?" + crls + "?base?(cn=B)"), CRYPT_E_NOT_FOUND},
            {server.url("cn=empty,o=Test?" + crls), CRYPT_E_NOT_FOUND},
            {server.url("cn=large,o=Test"), ERROR_FILE_TOO_LARGE},
            {server.url("nonsense?" + crls), ERROR_INTERNET_INVALID_URL},
            {server.url("cn=A,o=Test?" + crls + "?base?(("), ERROR_INTERNET_INVALID_URL},
            {"ldap:///cn=A,o=Test?" + crls, ERROR_INTERNET_INVALID_URL},
            {"ldap://127.0.0.1:1/o=Test", ERROR_INTERNET_CANNOT_CONNECT},
            {"ldaps" + server.url("o=Test").substr(4), ERROR_INTERNET_CANNOT_CONNECT},
            {"ldap" + silent.url("/o=Test").substr(4), ERROR_TIMEOUT},
            {"ldaps" + silent.url("/o=Test").substr(4), ERROR_TIMEOUT},
        };
        for (const auto& [url, error] : faults) {
            const DWORD limit_ms = error == ERROR_TIMEOUT ? 300 : ample_ms;
            const auto start = Clock::now();
            EXPECT_EQ(retrieve(url, all_objects, limit_ms), failure(error)) << url;
            EXPECT_LT(Clock::now() - start, milliseconds(limit_ms + 100)) << url;
        }
    };
    EXPECT_TRUE(passes_with_cache(checks, "response_limit = 190000\n"));
}

} // namespace
} // namespace norvane::testing
