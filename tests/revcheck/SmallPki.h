// A root that issues leaves itself, in files.
#pragma once

#include "Program.h"
#include "support/CertificateBuilder.h"
#include "support/CrlBuilder.h"

namespace norvane::testing {

inline std::string text(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

struct SmallPki {
    TemporaryFolder folder;
    std::string root = write("root.der", {.issuer = common_name("Issuer"),
                                          .subject = common_name("Issuer"),
                                          .extensions = {basic_constraints(Holder::ca)}});

    std::string write(const std::string& name, const CertificateBuilder& certificate) const {
        return folder.write(name, text(certificate.sign(Key::ec(0))));
    }
    // With the root alone in place of the system's stores.
    [[nodiscard]] Arguments arguments(const Arguments& more) const {
        Arguments all{"--root", root, "--ca", root, "--time", "2026-06-01T00:00:00Z", "--json"};
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }
};

} // namespace norvane::testing
