// Material made by the openssl command, GOST by Debian's engine for it.
#pragma once

#include "support/Der.h"
#include "support/TemporaryFolder.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace norvane::testing {

// Runs the command in a folder of its own, with a configuration that has the engine.
class OpensslCommand {
  public:
    OpensslCommand() {
        static_cast<void>(folder_.write("openssl.cnf", "openssl_conf = init\n"
                                                       "[init]\nengines = engines\n"
                                                       "[engines]\ngost = gost\n"
                                                       "[gost]\nengine_id = gost\n"
                                                       "default_algorithms = ALL\n"
                                                       "[req]\ndistinguished_name = name\n"
                                                       "[name]\n"));
    }

    // Fails the test, with what the command said, if it cannot do that.
    [[nodiscard]] bool run(const std::string& arguments) const {
        const std::string command = "cd '" + folder_.path().string() +
                                    "' && OPENSSL_CONF=openssl.cnf openssl " + arguments +
                                    " >log 2>&1 </dev/null";
        // NOLINTNEXTLINE(cert-env33-c): a shell is wanted, and the text is the test's own
        const bool done = std::system(command.c_str()) == 0;
        EXPECT_TRUE(done) << "openssl " << arguments << "\n"
                          << text("log") << "(GOST needs the package libengine-gost-openssl)";
        return done;
    }

    // The content of a file in the folder; empty if there is none.
    [[nodiscard]] Bytes bytes(const std::string& file) const {
        const std::string content = text(file);
        return {content.begin(), content.end()};
    }

  private:
    [[nodiscard]] std::string text(const std::string& file) const {
        std::ifstream stream(folder_.path() / file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    TemporaryFolder folder_;
};

} // namespace norvane::testing
