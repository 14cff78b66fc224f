// The page that --report writes.
#include "SmallPki.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>

namespace norvane::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

// What stands between the tags; an element that is not closed, or closed by another's tag, is told.
std::string text_between_tags(const std::string& page) {
    const std::regex tag(R"re(<(/?)([a-z0-9]+)(?: [a-zA-Z0-9-]+="[^"<>]*")*(/?)>)re");
    std::vector<std::string> open;
    std::string text;
    auto last = page.cbegin();
    for (std::sregex_iterator each(page.begin(), page.end(), tag); each != std::sregex_iterator();
         ++each) {
        text.append(last, (*each)[0].first);
        last = (*each)[0].second;
        const std::string name = (*each)[2];
        if ((*each)[1].length() != 0) {
            if (open.empty() || open.back() != name) {
                ADD_FAILURE() << "nothing is open that </" << name << "> closes";
                return page;
            }
            open.pop_back();
        } else if ((*each)[3].length() == 0) {
            open.push_back(name);
        }
    }
    EXPECT_TRUE(open.empty());
    return text.append(last, page.cend());
}

} // namespace

TEST(Page, ShowsHostileNamesAsTextAndStaysWellFormed) {
    const SmallPki pki;
    const std::string hostile =
        "</dd><script>'&\"\x1b\n\u202e\u202c\uffff]]>" + std::string(100'000, 'W');
    const std::string leaf = pki.write(
        "<b>\x07.der", {.subject = name({{"2.5.4.3", utf8(hostile)}}),
                        .extensions = {crl_distribution_points({{.full_name = {url(hostile)}}})}});
    const std::string file = pki.folder.path() / "page.html";
    const Ending ending = run_revcheck(pki.arguments(
        {"--cache-dir", pki.folder.path() / "cache", "--report", file, pki.root, leaf, "no<i>ne"}));
    EXPECT_EQ(ending.code, 65);
    EXPECT_EQ(ending.verdicts().size(), 2U);

    const std::string page = content_of(file);
    EXPECT_THAT(
        page,
        HasSubstr(
            "&lt;/dd&gt;&lt;script&gt;&#39;&amp;&quot;\\x1b\\x0a\\u{202e}\\u{202c}\\u{ffff}"));
    EXPECT_THAT(page, HasSubstr("no&lt;i&gt;ne: "));
    for (const char* const raw : {"<script", "<b>", "\x1b", "\x07", "\u202e\u202c", "\uffff"}) {
        EXPECT_THAT(page, Not(HasSubstr(raw)));
    }
    std::string text = text_between_tags(page);
    EXPECT_EQ(text.substr(0, 16), "<!DOCTYPE html>\n");
    text.erase(0, 16);
    EXPECT_EQ(text.find_first_of("<>"), text.npos);
    EXPECT_FALSE(std::regex_search(text, std::regex("&(?!(amp|lt|gt|quot|#39);)")));
}

TEST(Page, ThatCannotBeWrittenIsNamedAndTheVerdictsAreTold) {
    const SmallPki pki;
    const std::string folder = pki.folder.path();
    const auto run = [&](const std::string& file) {
        return run_revcheck(with_samples({"-q", "--report", file, examples + "rsa-revoked.pem"}));
    };
    EXPECT_EQ(run(folder + "/page.html").code, 1);
    EXPECT_THAT(content_of(folder + "/page.html"), HasSubstr("REVOKED: "));
    for (const std::string& file : {folder, folder + "/none/page.html"}) {
        const Ending ending = run(file);
        EXPECT_EQ(ending.code, 74);
        EXPECT_THAT(ending.err, HasSubstr(file + ": "));
    }
    const auto entries = std::filesystem::directory_iterator(folder);
    EXPECT_EQ(std::distance(begin(entries), end(entries)), 2) << "the root and the page";
}

} // namespace norvane::testing
