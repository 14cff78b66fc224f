// Issuers and CRLs that servers bring, or do not.
#include "end_to_end/Decisions.h"
#include "support/CertificateBuilder.h"
#include "support/CrlBuilder.h"
#include "support/HttpServer.h"
#include "support/LdapServer.h"

#include <numeric>

namespace norvane::testing {
namespace {

// Serial numbers of leaves: listed nowhere, in the base CRL, in the delta, in the base for a hold.
constexpr std::uint8_t unlisted = 0x10, compromised = 0x11, superseded = 0x12, held = 0x13;

HttpReply reply_of(const Bytes& bytes) {
    return http_reply({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

// One point for each URL.
std::vector<DistributionPoint> at(const std::vector<std::string>& urls) {
    std::vector<DistributionPoint> points(urls.size());
    for (std::size_t i = 0; i < urls.size(); ++i)
        points[i].full_name = {url(urls[i])};
    return points;
}
Bytes crls_at(const std::vector<std::string>& urls) { return crl_distribution_points(at(urls)); }

// A user who has a root, and asks about leaves of a CA below it. A server has all the rest.
class Network : public ::testing::Test {
  protected:
    Network() {
        root_ = file("root.cer", certificate("Root", "Root", root_key_, {}));
        ca_ = certificate("Root", "CA", ca_key_, {by_root_, crls_at({server_.url("/root")})});
        base_ = CrlBuilder{.issuer = common_name("CA"),
                           .entries = {{.serial = {compromised}, .extensions = {reason_code(1)}},
                                       {.serial = {held}, .extensions = {reason_code(6)}}},
                           .extensions = {by_ca_, crl_number(integer(1)),
                                          freshest_crl(at({server_.url("/delta")}))}}
                    .sign(ca_key_);
        delta_ = delta(2, superseded, 4);
        server_.on("/issuer", reply_of(ca_));
        const CrlBuilder of_root{.issuer = common_name("Root"), .extensions = {by_root_}};
        server_.on("/root", reply_of(of_root.sign(root_key_)));
        server_.on("/base", reply_of(base_));
        server_.on("/delta", reply_of(delta_));
    }

    [[nodiscard]] Bytes certificate(const char* issuer, const char* subject, const Key& key,
                                    std::vector<Bytes> extensions) const {
        extensions.push_back(basic_constraints(Holder::ca));
        extensions.push_back(subject_key_identifier(text_bytes(subject)));
        return CertificateBuilder{.issuer = common_name(issuer),
                                  .subject = common_name(subject),
                                  .spki = key.spki(),
                                  .extensions = extensions}
            .sign(root_key_);
    }
    // On top of the base; `number` also tells the month.
    [[nodiscard]] Bytes delta(int number, std::uint8_t serial, int reason) const {
        return CrlBuilder{
            .issuer = common_name("CA"),
            .this_update = utc_time("260" + std::to_string(number) + "02000000Z"),
            .entries = {{.serial = {serial}, .extensions = {reason_code(reason)}}},
            .extensions = {by_ca_, crl_number(integer(number)), delta_crl_indicator(integer(1))}}
            .sign(ca_key_);
    }
    [[nodiscard]] Bytes leaf(std::uint8_t serial, std::vector<Bytes> pointers) const {
        pointers.push_back(by_ca_);
        return CertificateBuilder{
            .serial = {serial}, .issuer = common_name("CA"), .extensions = pointers}
            .sign(ca_key_);
    }
    // One that names its base CRL twice, and its delta as the base does.
    [[nodiscard]] Bytes leaf(std::uint8_t serial) const {
        return leaf(serial, {authority_info_access({server_.url("/issuer")}),
                             crls_at({server_.url("/base"), server_.url("/base")}),
                             freshest_crl(at({server_.url("/delta")}))});
    }
    [[nodiscard]] std::string file(const std::string& name, const Bytes& bytes) const {
        return folder_.write(name, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    }
    [[nodiscard]] std::string decision(const Bytes& leaf, Arguments more = {},
                                       const std::string& cache = "cache") const {
        more.insert(more.end(),
                    {file("leaf.cer", leaf), "--root", root_, "--ca", root_, "--cache-dir",
                     folder_.path() / cache, "--time", "2026-06-01T00:00:00Z"});
        return decide(more).at(0);
    }

    HttpServer server_;
    TemporaryFolder folder_;
    const Key& root_key_ = Key::ec(0);
    const Key& ca_key_ = Key::ec(1);
    Bytes by_root_ = authority_key_identifier(text_bytes("Root"));
    Bytes by_ca_ = authority_key_identifier(text_bytes("CA"));
    std::string root_; // a file
    Bytes ca_, base_, delta_;
};

TEST_F(Network, EachUrlIsAskedOnceInAPassAndNoneForWhatTheCacheFindsGood) {
    const struct {
        const char* cache;
        Arguments how;
        std::uint8_t serial;
        const char* decision;
        std::vector<std::size_t>
            requests; // issuer, root, base, delta; all up to the end of the row
    } rows[] = {
        {"a", {"--cache-only"}, unlisted, "no_check", {0, 0, 0, 0}},
        {"a", {}, unlisted, "good", {1, 1, 1, 1}},
        {"a", {}, unlisted, "good", {1, 1, 1, 1}},
        {"a", {"--cache-only"}, compromised, "revoked:1", {1, 1, 1, 1}},
        {"a", {}, compromised, "revoked:1", {1, 1, 2, 2}},
        {"a", {"--cache-only"}, superseded, "revoked:4", {1, 1, 2, 2}},
        {"b", {"--accumulative"}, superseded, "revoked:4", {2, 2, 3, 3}},
    };
    for (std::size_t row = 0; row < std::size(rows); ++row) {
        const auto& [cache, how, serial, expected, requests] = rows[row];
        EXPECT_EQ(decision(leaf(serial), how, cache), expected) << "row " << row;
        std::vector<std::size_t> seen;
        for (const char* path : {"/issuer", "/root", "/base", "/delta"})
            seen.push_back(server_.requests(path).size());
        EXPECT_EQ(seen, requests) << "row " << row;
        EXPECT_EQ(server_.connections(), std::accumulate(seen.begin(), seen.end(), std::size_t{0}));
    }
}

TEST_F(Network, ADirectoryBringsIssuersAndCrlsUntilTheCacheHasThem) {
    if (!LdapServer::is_installed())
        GTEST_SKIP() << "slapd is not installed";
    const auto entry = [](const char* name, const char* kind, const Bytes& value) {
        return LdapEntry{name, {"organizationalUnit", "pkiCA"}, {{kind, {value}}}};
    };
    const std::string crls = "certificateRevocationList;binary";
    auto directory = std::make_unique<LdapServer>(std::vector{
        entry("ou=CA", "cACertificate;binary", ca_), entry("ou=base", crls.c_str(), base_),
        entry("ou=delta", crls.c_str(), delta_)});
    server_.on("/delta", http_reply("", "404 Not Found"));
    const auto leaf_there = [&, start = directory->url("ou=")](std::uint8_t serial) {
        return leaf(serial, {authority_info_access({start + "CA,o=Test?cACertificate;binary"}),
                             crls_at({start + "base,o=Test?" + crls}),
                             freshest_crl(at({start + "delta,o=Test?" + crls}))});
    };
    EXPECT_EQ(decision(leaf_there(unlisted), {"--cache-only"}), "no_check");
    EXPECT_EQ(decision(leaf_there(unlisted)), "good");
    EXPECT_EQ(decision(leaf_there(compromised)), "revoked:1");
    EXPECT_EQ(decision(leaf_there(superseded)), "revoked:4");
    directory.reset();
    EXPECT_EQ(decision(leaf_there(unlisted)), "good");
    EXPECT_EQ(decision(leaf_there(unlisted), {}, "empty"), "no_check");
}

TEST_F(Network, ARevocationFromTheCacheIsUndoneByANewerListButNotByAServerWithoutOne) {
    EXPECT_EQ(decision(leaf(held)), "revoked:6");
    for (const char* path : {"/base", "/delta"})
        server_.on(path, http_reply("", "503 Service Unavailable"));
    EXPECT_EQ(decision(leaf(held)), "revoked:6");
    EXPECT_EQ(decision(leaf(held), {}, "empty"), "no_check");
    server_.on("/delta", reply_of(delta(5, held, 8)));
    EXPECT_EQ(decision(leaf(held), {"--cache-only"}), "revoked:6");
    EXPECT_EQ(decision(leaf(held)), "good");
}

TEST_F(Network, ACertificateHasNoMoreServersAskedThanAQuestionMay) {
    std::vector<std::string> urls;
    for (int number = 0; number < 100; ++number)
        urls.push_back(server_.url("/absent" + std::to_string(number)));
    EXPECT_EQ(decision(leaf(unlisted, {crls_at(urls)}), {"--certs", file("ca.cer", ca_)}),
              "no_check");
    EXPECT_EQ(server_.connections(), 64U);
}

TEST_F(Network, ACrlOnWhichAVerdictRestedKeepsOlderOnesOutForGood) {
    const auto base = [&](const char* month, std::vector<CrlEntry> entries) {
        return reply_of(CrlBuilder{.issuer = common_name("CA"),
                                   .this_update = utc_time(std::string(month) + "01000000Z"),
                                   .entries = std::move(entries),
                                   .extensions = {by_ca_, crl_number(integer(1))}}
                            .sign(ca_key_));
    };
    server_.on("/new", base("2605", {{.serial = {unlisted}, .extensions = {reason_code(1)}}}));
    server_.on("/old", base("2604", {}));
    const auto leaf_of = [&](const char* path) {
        return leaf(unlisted, {authority_info_access({server_.url("/issuer")}),
                               crls_at({server_.url(path)})});
    };
    EXPECT_EQ(decision(leaf_of("/old"), {}, "other"), "good");
    EXPECT_EQ(decision(leaf_of("/new")), "revoked:1");
    // A full cache and a day later.
    for (const auto& item : std::filesystem::directory_iterator(folder_.path() / "cache"))
        if (item.path().extension() != ".verified")
            std::filesystem::remove(item.path());
    EXPECT_EQ(decision(leaf_of("/old")), "no_check");
}

TEST_F(Network, ADeadServerCostsOnlyItsTimeOut) {
    const HttpServer deaf(HttpServer::Accepts::nothing);
    HttpServer silent;
    for (const char* path : {"/1", "/2"})
        silent.on(path, {.bytes = {}, .hang = true});
    const std::string ldap = "ldap" + silent.url("/o=Test").substr(4);
    const Bytes four = crls_at({silent.url("/1"), deaf.url("/2"), ldap, silent.url("/2")});
    const Arguments half = {"--timeout", "500"};
    const struct {
        Bytes pointer;
        Arguments how;
        const char* decision;
        std::size_t connections; // to the silent server
    } rows[] = {
        {authority_info_access({silent.url("/1")}), half, "no_check", 1},
        {crls_at({silent.url("/1"), server_.url("/base")}), {"--timeout", "3000"}, "good", 1},
        {four, half, "no_check", 3},
        {four, {"--timeout", "500", "--accumulative"}, "no_check", 1},
        {four, {"--cache-only"}, "no_check", 0},
        {crls_at({"http://127.0.0.1:1/", "ldap://127.0.0.1:1/"}), {}, "no_check", 0},
    };
    std::size_t connections = 0;
    for (std::size_t row = 0; row < std::size(rows); ++row) {
        SCOPED_TRACE("row " + std::to_string(row));
        Arguments how = rows[row].how;
        if (row != 0) // there the issuer is sought
            how.insert(how.end(), {"--certs", file("ca.cer", ca_)});
        EXPECT_EQ(decision(leaf(unlisted, {rows[row].pointer}), how), rows[row].decision);
        EXPECT_EQ(silent.connections(), connections += rows[row].connections);
    }
}

} // namespace
} // namespace norvane::testing
