// A root that issues leaves itself and their CRL, in files.
#pragma once

#include "Program.h"
#include "support/CertificateBuilder.h"
#include "support/CrlBuilder.h"

namespace norvane::testing {

struct SmallPki {
    TemporaryFolder folder;
    std::string empty = folder.path() / "empty";
    std::string root =
        write("root.der", CertificateBuilder{.issuer = common_name("Issuer"),
                                             .subject = common_name("Issuer"),
                                             .extensions = {basic_constraints(Holder::ca)}});
    std::string leaf = write("leaf.der", CertificateBuilder{.spki = Key::ec(1).spki()});

    SmallPki() { std::filesystem::create_directory(empty); }

    std::string write(const std::string& name, const CertificateBuilder& certificate) const {
        return folder.write(name, text(certificate.sign(Key::ec(0))));
    }
    // With these in place of the system's stores.
    [[nodiscard]] Arguments arguments(const Arguments& more) const {
        Arguments all{"--root", root, "--ca", empty, "--time", "2026-06-01T00:00:00Z", "--json"};
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }
    [[nodiscard]] nlohmann::json check(const CrlBuilder& crl) const {
        const std::string file = folder.write("a.crl", text(crl.sign(Key::ec(0))));
        return run_revcheck(arguments({"--cache-only", "--crls", file, leaf})).verdicts().at(0);
    }
    static std::string text(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }
};

} // namespace norvane::testing
