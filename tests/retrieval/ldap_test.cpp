#include "retrieval/Retrieval.h"
#include "support/LdapServer.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>

namespace norvane::testing {
namespace {

namespace fs = std::filesystem;

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
            {"ldap://a%20ldap:%2f%2f127.0.0.1/o=Test", ERROR_INTERNET_INVALID_URL},
            {server.url("o=Test%0d%0aQUIT"), ERROR_INTERNET_INVALID_URL},
            {server.url("o=Test?a%7f"), ERROR_INTERNET_INVALID_URL},
            {server.url("o=Test?a?base?(a=%5c0d%5C0aQUIT)"), ERROR_INTERNET_INVALID_URL},
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

// A server that begins a message and never ends it.
TEST(LdapRetrieval, NothingIsLeftOfServersThatStopInAMessage) {
    const auto checks = [] {
        const auto count = [](const char* folder) {
            const fs::directory_iterator items(folder);
            return std::distance(begin(items), end(items));
        };
        const int listener = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        socklen_t size = sizeof address;
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ASSERT_EQ(bind(listener, generic, size), 0);
        ASSERT_EQ(getsockname(listener, generic, &size), 0);
        ASSERT_EQ(listen(listener, 64), 0);
        std::vector<int> accepted;
        std::thread stopper([&] {
            for (int next = 0; (next = accept(listener, nullptr, nullptr)) >= 0;) {
                static_cast<void>(send(next, "\x30\x84\x00\x00\x10\x00\x02", 7, 0));
                accepted.push_back(next);
            }
        });
        const std::string base = "ldap://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
        const auto files = count("/proc/self/fd");
        const auto threads = count("/proc/self/task");
        constexpr int retrievals = 20;
        for (int i = 0; i < retrievals; ++i)
            EXPECT_EQ(retrieve(base + "/o=" + std::to_string(i), all_objects, 20),
                      failure(ERROR_TIMEOUT));
        const auto patience = Clock::now() + milliseconds(ample_ms);
        while (count("/proc/self/task") > threads && Clock::now() < patience)
            std::this_thread::yield();
        EXPECT_EQ(count("/proc/self/task"), threads);
        shutdown(listener, SHUT_RDWR);
        stopper.join();
        EXPECT_EQ(count("/proc/self/fd"), files + std::ssize(accepted));
        for (const int connection : accepted)
            close(connection);
        close(listener);
    };
    EXPECT_TRUE(passes_with_cache(checks));
}

} // namespace
} // namespace norvane::testing
