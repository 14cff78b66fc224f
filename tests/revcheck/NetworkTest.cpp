// What goes over the network, and what a user sees meanwhile.
#include "SmallPki.h"
#include "support/HttpServer.h"

#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace norvane::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;

// A leaf below an issuing CA; the server has the CA's certificate and both CRLs.
struct OnlinePki : SmallPki {
    HttpServer server;
    Bytes ca_name = common_name("CA");

    explicit OnlinePki(HttpServer::Accepts accepts = HttpServer::Accepts::connections)
        : server(accepts) {
        const auto at = [this](const std::string& path) {
            return crl_distribution_points({{.full_name = {url(server.url(path))}}});
        };
        const Bytes ca =
            CertificateBuilder{.subject = ca_name,
                               .spki = Key::ec(1).spki(),
                               .extensions = {basic_constraints(Holder::ca), at("/root.crl")}}
                .sign(Key::ec(0));
        const CertificateBuilder builder{
            .issuer = ca_name,
            .extensions = {at("/ca.crl"), authority_info_access({server.url("/ca.cer")})}};
        leaf = folder.write("leaf.der", text(builder.sign(Key::ec(1))));
        server.on("/ca.cer", http_reply(text(ca)));
        server.on("/root.crl", http_reply(text(CrlBuilder().sign(Key::ec(0)))));
        server.on("/ca.crl", http_reply(ca_crl({})));
    }
    [[nodiscard]] std::string ca_crl(std::vector<CrlEntry> entries) const {
        return text(CrlBuilder{.issuer = ca_name, .entries = std::move(entries)}.sign(Key::ec(1)));
    }
    // The status, and how many connections were made for it.
    [[nodiscard]] std::pair<std::string, std::size_t> check(const std::string& cache,
                                                            const Arguments& more = {}) const {
        const std::size_t before = server.connections();
        Arguments all = arguments({"--cache-dir", folder.path() / cache});
        all.insert(all.end(), more.begin(), more.end());
        all.push_back(leaf);
        const Ending ending = run_revcheck(all);
        return {ending.verdicts().at(0)["status"], server.connections() - before};
    }
};
using Seen = std::pair<std::string, std::size_t>;

} // namespace

TEST(Network, IsUsedOnceForEachUrlAndNotAtAllWhereTheCacheDecides) {
    OnlinePki pki;
    EXPECT_EQ(pki.check("one", {"--cache-only"}), Seen("no_check", 0));
    EXPECT_EQ(pki.check("one"), Seen("good", 3)) << "the CA's certificate and two CRLs";
    EXPECT_EQ(pki.check("one"), Seen("good", 0));
    EXPECT_EQ(pki.check("one", {"--cache-only"}), Seen("good", 0));

    pki.server.on("/ca.crl", http_reply(pki.ca_crl({{.serial = {0x01}}})));
    EXPECT_EQ(pki.check("two"), Seen("revoked", 3));
    const auto [status, connections] = pki.check("two");
    EXPECT_EQ(status, "revoked");
    EXPECT_EQ(pki.server.requests("/ca.crl").size(), 3U)
        << "a revocation out of the cache is decided again over the wire";
    EXPECT_LE(connections, 2U);
}

TEST(Network, ThatIsDeadCostsNoMoreThanTheTimeOut) {
    const OnlinePki pki(HttpServer::Accepts::nothing);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(pki.check("c", {"--timeout", "300"}).first, "no_check");
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
}

TEST(Progress, ShowsAtATerminalWhenARetrievalTakesLongerThanASecond) {
    OnlinePki pki;
    HttpReply slow = http_reply(pki.ca_crl({}));
    slow.before = 1500ms;
    pki.server.on("/ca.crl", slow);
    const std::string cache = pki.folder.path() / "cache";
    const Arguments all = pki.arguments({"--cache-dir", cache, pki.leaf});
    const std::string seen = on_terminal(all);
    EXPECT_THAT(seen, ::testing::StartsWith("\r\033[Kchecking " + pki.leaf + " (1 s)\r\033[K{"));
    EXPECT_THAT(on_terminal(all), ::testing::StartsWith("{")) << "the cache takes no time";
}

} // namespace norvane::testing
