// For each cause that keeps a check from being possible, what revcheck says it is: once with files
// given by hand, once with all but the root from a server.
#include "revcheck/Program.h"
#include "support/CertificateBuilder.h"
#include "support/CrlBuilder.h"
#include "support/HttpServer.h"
#include "support/LdapServer.h"

#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace norvane::testing {
namespace {

const Bytes past = utc_time("260401000000Z");   // before the moment of the checks
const Bytes future = utc_time("260701000000Z"); // behind it

// A root, a CA below it, what it issued, and CRLs of both. A cause changes some of it.
struct Material {
    CertificateBuilder root{.issuer = common_name("Root"),
                            .subject = common_name("Root"),
                            .spki = Key::ec(0).spki(),
                            .extensions = {basic_constraints(Holder::ca)}};
    std::vector<CertificateBuilder> cas = {{.serial = {0x10},
                                            .issuer = common_name("Root"),
                                            .subject = common_name("CA"),
                                            .spki = Key::ec(1).spki(),
                                            .extensions = {basic_constraints(Holder::ca)}}};
    CertificateBuilder leaf{.issuer = common_name("CA"), .spki = Key::ec(3).spki()};
    std::vector<CrlBuilder> crls = {{.issuer = common_name("CA")}};
    CrlBuilder root_crl{.issuer = common_name("Root")};
    std::vector<DistributionPoint> points = {}; // of the leaf, beside those that are retrieved
    Key crl_key = Key::ec(1);                   // of all but the first: key 2
    Key ca_key = Key::ec(2);                    // signs what the CA itself issues for a CA
    std::function<Bytes(CertificateBuilder)> sign_leaf =
        [](const CertificateBuilder& unsigned_leaf) { return unsigned_leaf.sign(Key::ec(1)); };
    Arguments options = {};
    std::string configuration = "# as it is\n";

    CertificateBuilder& ca() { return cas.front(); }
    CrlBuilder& crl() { return crls.front(); }
    // A second certificate of the CA, for key 2, which has signed the CRL.
    CertificateBuilder& signer() {
        crl_key = Key::ec(2);
        cas.push_back(ca());
        cas.back().serial = {0x11};
        cas.back().spki = Key::ec(2).spki();
        return cas.back();
    }
};

struct Cause {
    const char* code;
    std::function<void(Material&)> make;
    const char* over_network = ""; // the code there, if it is another
};

DistributionPoint at(const std::string& place) { return {.full_name = {url(place)}}; }

Bytes scope(const IssuingDistributionPoint& point) { return issuing_distribution_point(point); }

const Bytes delta_place = freshest_crl({at("http://127.0.0.1:1/delta")});

void add_delta(Material& material, const Bytes& next_update) {
    material.crl().extensions = {crl_number(integer(1)), delta_place};
    material.crls.push_back(
        {.issuer = common_name("CA"),
         .next_update = next_update,
         .extensions = {crl_number(integer(2)), delta_crl_indicator(integer(1))}});
}

const Cause causes[] = {
    {"issuer_not_found", [](Material& m) { m.cas.clear(); }, "http_status"},
    {"crl_missing", [](Material& m) { m.crls.clear(); }, "http_status"},
    {"crl_expired", [](Material& m) { m.crl().next_update = past; }},
    {"crl_not_yet_valid", [](Material& m) { m.crl().this_update = future; }},
    {"crl_without_next_update", [](Material& m) { m.crl().next_update.reset(); }},
    {"crl_expired", [](Material& m) { m.root_crl.next_update = past; }},
    {"crl_signature_wrong", [](Material& m) { m.crl_key = Key::ec(4); }},
    {"crl_signature_wrong",
     [](Material& m) {
         m.crl_key = Key::ec(4);
         m.ca().extensions.push_back(subject_key_identifier({0x01}));
         m.crl().extensions = {authority_key_identifier(Bytes{0x01})};
     }},
    {"signer_not_found",
     [](Material& m) { m.crl().extensions = {authority_key_identifier(Bytes{0x02})}; }},
    {"signer_not_allowed_to_sign_crls",
     [](Material& m) { m.ca().extensions.push_back(key_usage(named_bits({key_cert_sign}))); }},
    {"certificate_expired", [](Material& m) { m.signer().not_after = past; }},
    {"certificate_not_yet_valid", [](Material& m) { m.signer().not_before = future; }},
    {"member_revoked",
     [](Material& m) {
         m.signer();
         m.root_crl.entries = {{.serial = {0x11}}};
     }},
    {"root_not_trusted",
     [](Material& m) {
         m.signer().issuer = common_name("CA"); // signed by itself, see files_of
     }},
    {"path_without_issuer", [](Material& m) { m.signer().issuer = common_name("Nobody"); }},
    {"distribution_point_differs",
     [](Material& m) { m.crl().extensions = {scope({.full_name = {url("http://elsewhere/")}})}; }},
    {"crl_only_for_users",
     [](Material& m) {
         m.leaf.extensions = {basic_constraints(Holder::ca)};
         m.crl().extensions = {scope({.only_user_certificates = true})};
     }},
    {"crl_only_for_cas",
     [](Material& m) { m.crl().extensions = {scope({.only_ca_certificates = true})}; }},
    {"reasons_not_covered",
     [](Material& m) {
         m.crl().extensions = {scope({.only_some_reasons = named_bits({1, 2})})};
     }},
    {"point_names_crl_issuer",
     [](Material& m) {
         m.points = {{.full_name = {url("http://127.0.0.1:1/a")},
                      .crl_issuer = {directory_name(common_name("Other"))}}};
     }},
    {"delta_missing",
     [](Material& m) {
         m.crl().extensions = {crl_number(integer(1)), delta_place};
     }},
    {"delta_expired", [](Material& m) { add_delta(m, past); }},
    {"delta_not_signed_by_signer",
     [](Material& m) {
         add_delta(m, future);
         m.crl_key = Key::ec(1);
     }},
    {"member_under_check_already",
     [](Material& m) { // Its key is vouched for by a CRL that it has signed itself.
         m.signer().issuer = common_name("CA");
         m.ca_key = Key::ec(1);
     }},
    {"crl_number_missing", [](Material& m) { m.crl().extensions = {delta_place}; }},
    {"certificate_expired", [](Material& m) { m.ca().not_after = past; }},
    {"signature_wrong", [](Material& m) { m.ca().spki = Key::ec(4).spki(); }},
    {"key_period_not_kept",
     [](Material& m) {
         m.options = {"--strict-pkup"};
         m.ca().extensions.push_back(
             extension("2.5.29.16", Critical::no,
                       sequence(context_primitive(1, text_bytes("20250101000000Z")))));
     }},
    {"not_a_ca", [](Material& m) { m.root.extensions.clear(); }},
    {"ca_may_not_sign_certificates",
     [](Material& m) { m.root.extensions.push_back(key_usage(named_bits({crl_sign}))); }},
    {"quota_spent",
     [](Material& m) { m.configuration = "[limits]\nsignature_verifications = 1\n"; }},
    {"algorithm_not_offered",
     [](Material& m) {
         m.configuration = "[crypto]\nsha1 = off\n";
         m.sign_leaf = [](CertificateBuilder unsigned_leaf) {
             const Bytes sha1 = sequence(oid("1.2.840.10045.4.1"));
             unsigned_leaf.signature_algorithm = sha1;
             return sequence(unsigned_leaf.tbs(), sha1,
                             bit_string(Key::ec(1).sign(unsigned_leaf.tbs())));
         };
     }},
};

std::string text(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

std::string codes_of(const nlohmann::json& verdict) {
    std::string codes = verdict["status"];
    for (const nlohmann::json& reason : verdict["reasons"])
        codes += " " + reason["code"].get<std::string>();
    return codes;
}

std::string check(const TemporaryFolder& folder, const Material& material, Arguments arguments) {
    const std::string configuration = folder.write("norvane.conf", material.configuration);
    arguments.insert(arguments.end(),
                     {"--json", "--config", configuration, "--time", "2026-06-01T00:00:00Z",
                      "--cache-dir", folder.path() / "cache"});
    arguments.insert(arguments.end(), material.options.begin(), material.options.end());
    const Ending ending = run_revcheck(arguments);
    EXPECT_EQ(ending.err, "");
    return codes_of(ending.verdicts().at(0));
}

std::vector<Bytes> signed_cas(const Material& material) {
    std::vector<Bytes> all;
    for (const CertificateBuilder& ca : material.cas)
        all.push_back(ca.sign(ca.issuer == common_name("CA") ? material.ca_key : Key::ec(0)));
    return all;
}

std::vector<Bytes> signed_crls(const Material& material) {
    std::vector<Bytes> all;
    for (const CrlBuilder& crl : material.crls)
        all.push_back(crl.sign(all.empty() ? material.crl_key : Key::ec(2)));
    return all;
}

std::string check_by_hand(Material material) {
    const TemporaryFolder folder;
    if (!material.points.empty())
        material.leaf.extensions.push_back(crl_distribution_points(material.points));
    const std::string root = folder.write("root.cer", text(material.root.sign(Key::ec(0))));
    Arguments arguments{folder.write("leaf.cer", text(material.sign_leaf(material.leaf))), "--root",
                        root, "--cache-only"};
    std::vector<Bytes> objects = signed_cas(material);
    for (const Bytes& crl : signed_crls(material))
        objects.push_back(crl);
    objects.push_back(material.root_crl.sign(Key::ec(0)));
    for (std::size_t i = 0; i < objects.size(); ++i)
        arguments.insert(arguments.end(),
                         {"--ca", folder.write("ca" + std::to_string(i), text(objects[i]))});
    return check(folder, material, arguments);
}

HttpReply reply_of(const Bytes& bytes) { return http_reply(text(bytes)); }

std::string check_over_network(Material material) {
    const TemporaryFolder folder;
    HttpServer server;
    server.on("/root", reply_of(material.root_crl.sign(Key::ec(0))));
    std::vector<DistributionPoint> points = material.points;
    const std::vector<Bytes> crls = signed_crls(material);
    for (std::size_t i = 0; i < std::max<std::size_t>(crls.size(), 1); ++i) {
        const std::string path = "/crl" + std::to_string(i);
        points.push_back(at(server.url(path)));
        if (i < crls.size())
            server.on(path, reply_of(crls[i]));
    }
    for (CertificateBuilder& ca : material.cas)
        ca.extensions.push_back(crl_distribution_points(
            {at(server.url(ca.issuer == common_name("CA") ? "/crl0" : "/root"))}));
    std::vector<std::string> urls{server.url("/ca0")};
    const std::vector<Bytes> cas = signed_cas(material);
    for (std::size_t i = 0; i < cas.size(); ++i) {
        const std::string path = "/ca" + std::to_string(i);
        server.on(path, reply_of(cas[i]));
        if (i != 0)
            urls.push_back(server.url(path));
    }
    material.leaf.extensions.push_back(authority_info_access(urls));
    material.leaf.extensions.push_back(crl_distribution_points(points));
    const std::string root = folder.write("root.cer", text(material.root.sign(Key::ec(0))));
    return check(folder, material,
                 {folder.write("leaf.cer", text(material.sign_leaf(material.leaf))), "--root", root,
                  "--ca", root});
}

} // namespace

TEST(Causes, AreNamedWhetherTheMaterialCameByHandOrOverTheNetwork) {
    for (std::size_t row = 0; row < std::size(causes); ++row) {
        const Cause& cause = causes[row];
        Material material;
        cause.make(material);
        EXPECT_THAT(check_by_hand(material), ::testing::HasSubstr(cause.code))
            << "row " << row << " by hand";
        const std::string there = *cause.over_network == '\0' ? cause.code : cause.over_network;
        EXPECT_THAT(check_over_network(material), ::testing::HasSubstr(there))
            << "row " << row << " over the network";
    }
}

TEST(Causes, OfRetrievalsAreNamedWithTheUrl) {
    HttpServer server;
    const HttpServer silent(HttpServer::Accepts::nothing);
    server.on("/page", http_reply("<html>Welcome</html>"));
    server.on("/large", http_reply(std::string(5000, 'x')));
    server.on("/there", http_redirect("ftp://127.0.0.1/crl"));
    const std::string on_server = server.url("").substr(std::string("http").size());
    struct Row {
        std::string url;
        std::string codes;
        Arguments options = {"--timeout", "2000"};
    };
    std::vector<Row> rows = {
        {server.url("/nothing"), "http_status"},
        {server.url("/page"), "response_without_object"},
        {server.url("/large"), "response_too_large"},
        {server.url("/there"), "redirection_failed"},
        {"http://nowhere.invalid/crl", "name_not_resolved"},
        {"http://127.0.0.1:1/crl", "server_not_reached"},
        {silent.url("/crl"), "server_silent", {"--timeout", "200"}},
        {"https" + on_server + "/crl", "tls_failed"},
        {"ftp://127.0.0.1/crl", "scheme_not_allowed"},
        {"http:///crl", "url_refused"},
        {server.url("/nothing"), "budget_spent", {"--accumulative", "--timeout", "0"}},
        {server.url("/nothing"), "crl_missing not_in_the_cache", {"--cache-only"}}};
    std::optional<LdapServer> directory;
    if (LdapServer::is_installed()) {
        directory.emplace(std::vector<LdapEntry>{});
        rows.push_back({directory->url("cn=CA,o=Test"), "entry_missing"});
    }
    for (const Row& row : rows) {
        Material material;
        const TemporaryFolder folder;
        material.configuration = "[retrieval]\nresponse_limit = 4096\n";
        material.leaf.extensions = {crl_distribution_points({at(row.url)})};
        material.options = row.options;
        const std::string root = folder.write("root.cer", text(material.root.sign(Key::ec(0))));
        const std::string ca = folder.write("ca.cer", text(signed_cas(material).at(0)));
        EXPECT_EQ(check(folder, material,
                        {folder.write("leaf.cer", text(material.leaf.sign(Key::ec(1)))), "--root",
                         root, "--ca", ca}),
                  "no_check " + row.codes)
            << row.url;
    }
}

} // namespace norvane::testing
