// Certificates and CRLs that lie in files, or that openssl makes.
#include "end_to_end/Decisions.h"

#include <algorithm>

namespace norvane::testing {
namespace {

const std::filesystem::path pack = PKITS;

Arguments split(const std::string& text, char separator) {
    Arguments parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);)
        parts.push_back(part);
    return parts;
}

const Decisions of_samples = {"good", "revoked:1", "revoked:5", "good"};

// About the four certificates of a kind.
Decisions decide_samples(const std::string& folder, const std::string& kind, Arguments more = {}) {
    more.insert(more.end(),
                {"--cache-only", "--root", folder + "stores/Root", "--ca", folder + "stores/CA"});
    for (const char* name : {"good", "revoked", "revoked-since", "released"})
        more.push_back(folder + kind + "-" + name + ".pem");
    return decide(more);
}

} // namespace

TEST(PkitsRows, AreDecidedAsTheySayAndTheSameAgain) {
    if (!exists(pack / "cases.tsv"))
        GTEST_SKIP() << "no PKITS pack in " << pack;
    const TemporaryFolder nothing;
    const auto rows = split(content_of(pack / "cases.tsv"), '\n');
    EXPECT_EQ(rows.size(), 1U + 103U);
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const auto columns = split(rows[i], '\t');
        Decisions expected{columns.at(8)};
        if (columns[8].ends_with('?')) { // the next column: "EITHER one OR the other: ..."
            const auto words = split(columns.at(9), ' ');
            expected = {words.at(1), words.at(3).substr(0, words[3].rfind(':'))};
        }
        Arguments arguments{pack / "certs" / columns[2], "--cache-only"};
        arguments.insert(arguments.end(), {"--root", pack / "certs" / columns[5], "--ca",
                                           nothing.path(), "--time", "2012-06-01T00:00:00Z"});
        for (const std::string& name : split(columns[3], ','))
            arguments.insert(arguments.end(), {"--certs", pack / "certs" / name});
        for (const std::string& name : split(columns[4], ','))
            arguments.insert(arguments.end(), {"--crls", pack / "crls" / name});
        const Decisions decisions = decide(arguments);
        ASSERT_EQ(decisions.size(), 1U) << columns[0];
        EXPECT_EQ(std::ranges::count(expected, decisions[0]), 1)
            << columns[0] << ": " << decisions[0] << ", not " << columns[8];
        EXPECT_EQ(decide(arguments), decisions) << columns[0];
    }
}

TEST(SamplePki, IsWhatItsNamesSayTodayAndNineYearsAfterItWasMade) {
    for (const char* kind : {"rsa", "gost"}) {
        EXPECT_EQ(decide_samples(examples, kind), of_samples) << kind;
        EXPECT_EQ(decide_samples(examples, kind, {"--time", "2035-11-01T00:00:00Z"}), of_samples);
    }
}

TEST(SamplePki, OfAnyGostKeysCountsUnlessOneBitOfASignatureIsWrong) {
    // The script makes its files beside itself. Its last lines choose the keys.
    std::string script = content_of(examples + "make-sample-pki");
    ASSERT_NE(script.find("\nKIND=rsa"), script.npos);
    script.resize(script.find("\nKIND=rsa"));
    for (const auto& [digest, key] :
         {std::pair{"md_gost12_256", "gost2012_256 -pkeyopt paramset:1.2.643.7.1.2.1.1.1"},
          std::pair{"md_gost12_512", "gost2012_512 -pkeyopt paramset:1.2.643.7.1.2.1.2.1"},
          std::pair{"md_gost94", "gost2001 -pkeyopt paramset:1.2.643.2.2.35.1"}}) {
        SCOPED_TRACE(key);
        const TemporaryFolder temporary;
        const std::string choice = std::string("\nKIND=gost DIGEST=") + digest +
                                   "\nnew_key=(-newkey " + key + ")\nmake_pki GOST\n";
        const std::string command = "bash " + temporary.write("make", script + choice).string();
        // NOLINTNEXTLINE(cert-env33-c,concurrency-mt-unsafe): one thread, and the command is ours
        ASSERT_EQ(std::system(command.c_str()), 0) << "are openssl and its GOST engine installed?";
        const std::string folder = temporary.path().string() + "/";
        EXPECT_EQ(decide_samples(folder, "gost"), of_samples);
        for (const char* name : {"root", "issuing-ca", "issuing-ca-delta"}) {
            const std::string file = std::string("stores/CA/gost-") + name + ".crl";
            const std::string intact = content_of(folder + file);
            std::string changed = intact;
            changed.at(changed.size() - 20) ^= 0x10;
            static_cast<void>(temporary.write(file, changed));
            EXPECT_EQ(decide_samples(folder, "gost"), Decisions(4, "no_check")) << name;
            static_cast<void>(temporary.write(file, intact));
        }
    }
}

} // namespace norvane::testing
