#include "sweep/Scenario.h"

#include "support/CertificateBuilder.h"
#include "support/CrlBuilder.h"

#include <sys/wait.h>

namespace norvane::testing {
namespace {

const std::string examples = PROJECT_FOLDER "/examples/";
const std::string program = REVCHECK;

std::string text(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

using Arguments = std::vector<std::string>;

Arguments joined(Arguments arguments, const Arguments& more) {
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

// A root that revokes a leaf in the newer one of two CRLs that are both current.
struct NewerCrl {
    const Key& key = Key::rsa(0);
    Bytes root = CertificateBuilder{.issuer = common_name("Issuer"),
                                    .subject = common_name("Issuer"),
                                    .spki = key.spki(),
                                    .extensions = {basic_constraints(Holder::ca)}}
                     .sign(key);
    Bytes older = CrlBuilder{.this_update = utc_time("260101000000Z")}.sign(key);
    Bytes outdated = CrlBuilder{.this_update = utc_time("260101000000Z"),
                                .next_update = utc_time("260201000000Z")}
                         .sign(key);
    Bytes newer = CrlBuilder{.this_update = utc_time("260301000000Z"),
                             .entries = {{.serial = {0x05}, .extensions = {reason_code(1)}}}}
                      .sign(key);

    [[nodiscard]] Bytes leaf(const std::string& crl_url) const {
        return CertificateBuilder{
            .serial = {0x05},
            .extensions = {crl_distribution_points({{.full_name = {url(crl_url)}}})}}
            .sign(key);
    }
};

} // namespace

Scenarios::Scenarios() {
    const NewerCrl pki;
    const std::string root = folder_.write("root/root.der", text(pki.root));
    const std::string older = folder_.write("older/older.crl", text(pki.older)).parent_path();
    static_cast<void>(folder_.write("both/older.crl", text(pki.older)));
    const std::string both = folder_.write("both/newer.crl", text(pki.newer)).parent_path();
    const std::string outdated = folder_.write("outdated.crl", text(pki.outdated));
    const std::string leaf = folder_.write("leaf.der", text(pki.leaf("http://nowhere.invalid/")));
    const std::string served =
        folder_.write("served.der", text(pki.leaf(server_.url("/newer.crl"))));
    server_.on("/newer.crl", http_reply(text(pki.newer)));

    const Arguments at{"--time", "2026-06-01T00:00:00Z", "--root", root};
    const Arguments samples{"--cache-only", "--root", examples + "stores/Root"};
    const auto revcheck = [this](std::string name, Arguments arguments) {
        all_.push_back({std::move(name), program, std::move(arguments)});
    };
    revcheck("newer-crl", joined(at, {"--ca", both, "--cache-only", leaf}));
    revcheck("newer-delta",
             joined(samples, {"--ca", examples + "stores/CA", examples + "rsa-revoked-since.pem"}));
    revcheck("only-crl", joined(at, {"--ca", both + "/newer.crl", "--cache-only", leaf}));
    revcheck("gost", joined(samples,
                            {"--ca", examples + "stores/CA", examples + "gost-revoked-since.pem"}));
    revcheck("http", joined(at, {"--ca", outdated, served}));
    all_.back().wants_cache_folder = true;
    const std::string warm = folder_.path() / "warm";
    revcheck("warm-cache",
             joined(at, {"--ca", outdated, "--cache-dir", warm, "--cache-only", served}));
    for (const char* const state : {"cold", "warm"}) {
        all_.push_back({std::string("call-") + state, FAULTY_CALL, {state, root, both, leaf}});
        all_.back().arms_itself = true;
    }
    std::string fill = program + " --quiet --cache-dir " + warm;
    for (const std::string& argument : joined(at, {"--ca", outdated, served})) {
        fill += " " + argument;
    }
    static_cast<void>(std::system(fill.c_str()));
}

} // namespace norvane::testing
