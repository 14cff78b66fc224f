// What is read, what is wrong with it, and the exit code.
#include "SmallPki.h"
#include "platform/FileMaterial.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace norvane::testing {
namespace {

using ::testing::HasSubstr;

const std::string good = examples + "rsa-good.pem";
const std::string revoked = examples + "rsa-revoked.pem";
const std::string stores = examples + "stores/";
const std::string crl = stores + "CA/rsa-root.crl";

// Of an issuer whom nobody knows; in DER.
std::string orphan() { return text(CertificateBuilder().sign(Key::ec(0))); }

} // namespace

TEST(ExitCode, IsTheFirstInTheOrderThatTheHelpTells) {
    const TemporaryFolder folder;
    const std::string unchecked = folder.write("orphan.der", orphan());
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
        {{"--root", "/nowhere", good}, 65, "/nowhere: there is no such file or folder"},
        {{"--ca", PROJECT_FOLDER "/README.md", good}, 65, "there is no certificate and no CRL"},
        {{"--root", crl, good}, 65, "rsa-root.crl: no certificate in it, so that nothing is"},
        {{good, stores}, 65, "no certificate in the folder"},
        {{good, stores}, 65, "stores/CA: passed over; --recursive goes into it"},
        {{"-r", stores, revoked}, 1, ""},
        {{"--issuer", crl, good}, 65, "holds 0 certificates; a hint is one"},
        {{"--config", configuration, good}, 65, "c.conf:3: \"maybe\" is not on or off"},
        {{}, 64, "no certificate is named"},
        {{"--no-such-option", good}, 64, "there is no --no-such-option; see"},
        {{"--cahe-only", good}, 64, "there is no --cahe-only; did you mean --cache-only?"},
        {{"--json", "--quiet", good}, 64, "--quiet excludes --json"},
        {{"--timeout", "-1", good}, 64, "--timeout"},
        {{"--timeout", "2147483647", good}, 64, "--timeout: Value 2147483647 not in range"},
        {{"--timeout", "2147483646", good}, 0, ""},
        {{"--time", "2026-01-31T09:30:00+24:00", good}, 64, "is not a time such as"},
        {{"--time", "2026-02-30", good}, 64, "is not a time such as"},
        {{"--time", "@", good}, 64, "is not a time such as"},
    };
    for (const auto& [arguments, code, complaint] : table) {
        const Ending ending = run_revcheck(with_samples(arguments));
        SCOPED_TRACE(::testing::PrintToString(arguments) + ending.out + ending.err);
        EXPECT_EQ(ending.code, code);
        EXPECT_THAT(ending.err, HasSubstr(complaint));
        EXPECT_EQ(ending.err.empty(), complaint.empty());
    }
}

TEST(Inputs, AreTakenInEachFormAndDamagedOnesCostOnlyThemselves) {
    const TemporaryFolder folder;
    const std::string der = orphan();
    std::string broken = content_of(good);
    broken.replace(broken.find("MII"), 3, "MIJ"); // The length of the outermost element.
    const std::string whole = folder.write("orphan.der", der);
    const std::string longer = folder.write("longer.der", der + "x");
    const std::string shorter = folder.write("shorter.der", der.substr(0, der.size() - 1));
    const std::string bundle =
        folder.write("b.pem", "text\n" + content_of(good) + broken + content_of(revoked));
    const std::string colon =
        folder.write("co:lon\\/root.pem", content_of(stores + "Root/rsa-root.pem"));
    const std::string list = content_of(crl);
    const std::string both =
        folder.write("both", content_of(colon) + pem("X509 CRL", Bytes(list.begin(), list.end())));
    const std::string ca = stores + "CA/rsa-issuing-ca";
    const std::string inputs = folder.write("inputs/good.pem", content_of(good)).parent_path();
    std::filesystem::copy(crl, inputs); // a folder may have others than certificates
    ASSERT_EQ(mkfifo((inputs + "/fifo").c_str(), 0600), 0); // nobody writes into it

    const Ending ending =
        run_revcheck({"--json", "--cache-only", "--root", colon, "--ca", both, "--ca", ca + ".crl",
                      "--ca", ca + "-delta.crl", "--issuer", ca + ".pem", whole, longer, shorter,
                      bundle, "/dev/stdin", inputs},
                     content_of(revoked));
    EXPECT_EQ(ending.code, 65);
    Arguments told;
    for (const auto& verdict : ending.verdicts())
        told.push_back(verdict["certificate"].get<std::string>() + " " +
                       verdict["status"].get<std::string>());
    EXPECT_EQ(told, (Arguments{whole + " no_check", bundle + "#1 good", bundle + "#3 revoked",
                               "/dev/stdin revoked", inputs + "/good.pem good"}));
    EXPECT_EQ(std::ranges::count(ending.err, '\n'), 4);
    for (const std::string& name : {longer, shorter, bundle + "#2", inputs + "/fifo"})
        EXPECT_THAT(ending.err, HasSubstr("revcheck: " + name + ": "));
}

} // namespace norvane::testing
