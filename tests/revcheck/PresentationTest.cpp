// How verdicts look, and when they come.
#include "SmallPki.h"
#include "support/HttpServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>
#include <set>

namespace norvane::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

std::set<std::string> options_in(const std::string& text) {
    const std::regex option("--[a-z][a-z-]+");
    return {std::sregex_token_iterator(text.begin(), text.end(), option), {}};
}

} // namespace

TEST(Verdicts, AreToldAsSoonAsTheyAreThere) {
    std::array<int, 2> in{};
    std::array<int, 2> out{};
    ASSERT_EQ(pipe(in.data()) + pipe(out.data()), 0);
    const pid_t child = fork();
    if (child == 0) {
        dup2(in[0], STDIN_FILENO);
        dup2(out[1], STDOUT_FILENO);
        close(in[1]);
        become_revcheck(with_samples({"--json", examples + "rsa-good.pem", "-"}), "/nowhere");
    }
    close(out[1]);
    const std::string first = read_some(out[0]);
    EXPECT_THAT(first, ::testing::EndsWith("}\n")) << "although standard input is still open";
    close(in[1]);
    close(in[0]);
    EXPECT_EQ(exit_code_of(child), 65) << "nothing came from standard input";
    close(out[0]);
}

TEST(Verdicts, OfPeopleBeginWithTheWordAndTellWhatTheyRestOn) {
    const Ending ending = run_revcheck(with_samples({examples + "rsa-revoked-since.pem"}));
    EXPECT_THAT(
        ending.out,
        ::testing::MatchesRegex(
            "REVOKED   .*/rsa-revoked-since.pem: cessationOfOperation\n"
            "  subject    C=RU, O=Sample PKI, CN=revoked-since.example.org\n"
            "  issuer     C=RU, O=Sample PKI, CN=Sample RSA Issuing CA\n"
            "  serial     0x1002\n"
            "  base CRL   number 1, thisUpdate .*-02-01T00:00:00Z, nextUpdate .*\n"
            "  delta CRL  number 2, thisUpdate .*-03-01T00:00:00Z, nextUpdate .*\n"
            "  entry      cessationOfOperation, dated .*-02-14T12:00:00Z, in the delta CRL\n"
            "  age        [0-9]* .*, as of .*Z\n"));
    const Ending quiet = run_revcheck(with_samples({"-q", examples + "rsa-revoked.pem"}));
    EXPECT_EQ(quiet.code, 1);
    EXPECT_EQ(quiet.out + quiet.err, "");
}

TEST(Verdicts, OfHostileNamesDoNotReachTheTerminal) {
    const SmallPki pki;
    const std::string file = pki.write(
        "evil\x1b.der",
        {.subject = name({{"2.5.4.3", utf8("a\x1b[2J\n\u202e\u009b\u200b\U000e0041\u00e9")}})});
    const Arguments arguments = with_samples({file, pki.folder.path() / "no\tne"});
    const Ending ending = run_revcheck(arguments);
    EXPECT_THAT(ending.out,
                HasSubstr("CN=a\\x1b[2J\\x0a\\u{202e}\\u{009b}\\u{200b}\\u{0e0041}\u00e9\n"));
    EXPECT_THAT(ending.out, HasSubstr("evil\\x1b.der"));
    EXPECT_THAT(ending.err, HasSubstr("no\\x09ne"));
    EXPECT_THAT(run_revcheck({"--json", file}).out,
                HasSubstr(R"(CN=a\u001b[2J\n\u202e\u009b\u200b\udb40\udc41\u00e9")"));
}

TEST(Terminals, HaveColourUnlessItIsRefusedAndProgressOfWhatTakesLong) {
    const Arguments arguments = with_samples({examples + "rsa-good.pem"});
    EXPECT_THAT(on_terminal(arguments), HasSubstr("\033[1;32mGOOD\033[0m"));
    EXPECT_THAT(run_revcheck(arguments).out, Not(HasSubstr("\033")));
    setenv("NO_COLOR", "1", 1); // NOLINT(concurrency-mt-unsafe)
    EXPECT_THAT(on_terminal(arguments), Not(HasSubstr("\033[1")));
    unsetenv("NO_COLOR"); // NOLINT(concurrency-mt-unsafe)

    const SmallPki pki;
    HttpServer server;
    HttpReply slow = http_reply(text(CrlBuilder().sign(Key::ec(0))));
    slow.before = std::chrono::milliseconds(1500);
    server.on("/crl", slow);
    const std::string leaf = pki.write(
        "leaf.der",
        {.extensions = {crl_distribution_points({{.full_name = {url(server.url("/crl"))}}})}});
    const Arguments all = pki.arguments({"--cache-dir", pki.folder.path() / "cache", leaf});
    EXPECT_THAT(on_terminal(all), StartsWith("\r\033[Kchecking " + leaf + " (1 s)\r\033[K{"));
    EXPECT_THAT(on_terminal(all), StartsWith("{")) << "the cache takes no time";
}

TEST(Help, AndManPageTellTheSameOptions) {
    const Ending help = run_revcheck({"--help"});
    EXPECT_EQ(help.code, 0);
    std::string page = content_of(PROJECT_FOLDER "/docs/revcheck.1");
    page = std::regex_replace(page, std::regex(R"(\\-)"), "-");
    const auto expected = options_in(std::regex_replace(help.out, std::regex("-showcerts"), ""));
    EXPECT_GT(expected.size(), 15U);
    EXPECT_EQ(options_in(page), expected);
    EXPECT_THAT(run_revcheck({"--version"}).out, ::testing::MatchesRegex("revcheck [0-9.]+\n"));
}

// What the decision can say, the tool has words for and the documents explain.
TEST(Events, HaveWordsAndALineInTheDocuments) {
    const std::string events = content_of(PROJECT_FOLDER "/src/record/Event.h");
    const std::string words = content_of(PROJECT_FOLDER "/tools/revcheck/EventWords.cpp");
    const std::string lines = content_of(PROJECT_FOLDER "/docs/decision-record.md");
    const std::regex code("Event \\w+\\{\\s*\"(\\w+)\"");
    std::size_t count = 0;
    for (std::sregex_iterator at(events.begin(), events.end(), code), end; at != end; ++at) {
        const std::string each = (*at)[1];
        EXPECT_NE(words.find("{\"" + each + "\""), std::string::npos) << each;
        EXPECT_NE(lines.find("`" + each + "`"), std::string::npos) << each;
        ++count;
    }
    EXPECT_GT(count, 90U);
}

} // namespace norvane::testing
