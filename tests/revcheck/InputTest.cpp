// What is read, what is wrong with it, and the exit code.
#include "Program.h"
#include "support/CertificateBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace norvane::testing {
namespace {

using ::testing::HasSubstr;

const std::string good = examples + "rsa-good.pem";
const std::string revoked = examples + "rsa-revoked.pem";
const std::string crl = examples + "stores/CA/rsa-root.crl";

std::string der_of(const std::string& pem_file) {
    const TemporaryFolder folder;
    const std::string out = folder.path() / "out";
    const std::string command = "openssl x509 -in '" + pem_file + "' -outform DER -out " + out;
    // NOLINTNEXTLINE(cert-env33-c): the text is the test's own
    EXPECT_EQ(std::system(command.c_str()), 0);
    return content_of(out);
}

std::vector<std::string> names(const Ending& ending) {
    std::vector<std::string> all;
    for (const auto& verdict : ending.verdicts()) {
        all.push_back(verdict["certificate"].get<std::string>() + " " +
                      verdict["status"].get<std::string>());
    }
    return all;
}

} // namespace

TEST(ExitCode, IsTheFirstInTheOrderThatTheHelpTells) {
    const TemporaryFolder folder;
    const Bytes orphan = CertificateBuilder().sign(Key::ec(0));
    const std::string unchecked =
        folder.write("orphan.der", {reinterpret_cast<const char*>(orphan.data()), orphan.size()});
    const std::string configuration = folder.write("c.conf", "[crypto]\n\nsha1 = maybe\n");
    const struct {
        Arguments arguments;
        int code;
        std::string complaint;
    } table[] = {
        {{good}, 0, ""},
        {{good, unchecked}, 2, ""},
        {{unchecked, revoked, good}, 1, ""},
        {{revoked, crl, good}, 65, "there is no certificate in it, only CRLs"},
        {{good, "/nowhere"}, 65, "/nowhere: there is no such file or folder"},
        {{"--certs", "/nowhere", good}, 65, "/nowhere: there is no such file or folder"},
        {{"--root", "/nowhere", good}, 65, "/nowhere: there is no such file or folder"},
        {{"--ca", PROJECT_FOLDER "/README.md", good}, 65, "there is no certificate and no CRL"},
        {{"--issuer", crl, good}, 65, "holds 0 certificates; a hint is one"},
        {{"--config", configuration, good}, 65, "c.conf:3: \"maybe\" is not on or off"},
        {{"--config", "/nowhere", good}, 65, "/nowhere: there is no such file"},
        {{}, 64, "no certificate is named"},
        {{"--no-such-option", good}, 64, "--no-such-option"},
        {{"--json", "--quiet", good}, 64, "--quiet excludes --json"},
        {{"--timeout", "-1", good}, 64, "--timeout"},
        {{"--time", "2026-01-31T09:30:00+03:00", good}, 64, "is not a time in UTC"},
        {{"--time", "2026-02-30T09:30:00Z", good}, 64, "is not a time in UTC"},
    };
    for (const auto& [arguments, code, complaint] : table) {
        const Ending ending = run_revcheck(with_samples(arguments));
        SCOPED_TRACE(::testing::PrintToString(arguments) + ending.out + ending.err);
        EXPECT_EQ(ending.code, code);
        EXPECT_THAT(ending.err, HasSubstr(complaint));
        EXPECT_EQ(ending.err.empty(), complaint.empty());
    }
}

TEST(Certificates, AreTakenFromEachFormAndEachIsChecked) {
    const TemporaryFolder folder;
    const std::string der = folder.write("good.der", der_of(good));
    const std::string bundle =
        folder.write("b.pem", "text\n" + content_of(good) + content_of(revoked));
    const std::string colon =
        folder.write("co:lon\\/root.pem", content_of(examples + "stores/Root/rsa-root.pem"));
    const std::string inputs = folder.path() / "inputs";
    std::filesystem::create_directory(inputs);
    std::filesystem::copy(good, inputs);
    std::filesystem::copy(crl, inputs);

    const Ending ending = run_revcheck({"--json", "--cache-only", "--root", colon, "--ca",
                                        examples + "stores/CA", der, bundle, "-", inputs},
                                       content_of(revoked));
    EXPECT_EQ(ending.err, "");
    EXPECT_EQ(names(ending), (Arguments{der + " good", bundle + "#1 good", bundle + "#2 revoked",
                                        "- revoked", inputs + "/rsa-good.pem good"}));
}

TEST(Certificates, ThatAreDamagedCostOnlyThemselves) {
    const TemporaryFolder folder;
    const std::string der = der_of(good);
    const std::string longer = folder.write("longer.der", der + "x");
    const std::string shorter = folder.write("shorter.der", der.substr(0, der.size() - 1));
    std::string broken = content_of(good);
    broken.replace(broken.find("MII"), 3, "MIJ"); // The length of the outermost element.
    const std::string bundle = folder.write("bundle.pem", broken + content_of(revoked));
    const Ending ending = run_revcheck(with_samples({"--json", longer, shorter, bundle, good}));
    EXPECT_EQ(ending.code, 65);
    EXPECT_EQ(names(ending), (Arguments{bundle + "#2 revoked", good + " good"}));
    for (const std::string& name : {longer, shorter, bundle + "#1"}) {
        EXPECT_THAT(ending.err, HasSubstr("revcheck: " + name + ": "));
    }
}

TEST(Stores, MayHoldBothKindsOfObjectsAndEachPlaceServes) {
    const std::string stores = examples + "stores/";
    const TemporaryFolder folder;
    const std::string both = folder.write("both", content_of(stores + "Root/rsa-root.pem") +
                                                      content_of(stores + "CA/rsa-root.crl"));
    const std::string ca = stores + "CA/rsa-issuing-ca.pem";
    const std::string cache = folder.path() / "cache";
    const Arguments cases[] = {
        {"--root", stores + "CA/rsa-root.crl", "--root", stores + "Root", "--certs", stores + "CA",
         "--ca", stores + "CA"},
        {"--root", stores + "Root/rsa-root.pem", "--ca", folder.path(), "--issuer", ca, "--crls",
         stores + "CA"},
        {"--root", stores + "Root", "--ca", cache, "--certs", stores + "Root", "--certs", ca,
         "--crls", stores + "CA/rsa-root.crl", "--crls", stores + "CA/rsa-issuing-ca.crl", "--crls",
         stores + "CA/rsa-issuing-ca-delta.crl"},
    };
    std::filesystem::create_directory(cache);
    std::filesystem::remove(both);
    for (Arguments arguments : cases) {
        arguments.insert(arguments.end(), {"--cache-only", "--cache-dir", cache, good});
        const Ending ending = run_revcheck(arguments);
        EXPECT_EQ(ending.code, 0) << ending.out << ending.err;
        EXPECT_EQ(ending.err, "");
    }
}

} // namespace norvane::testing
