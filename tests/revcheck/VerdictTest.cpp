// What is decided, and what is told about it to programs.
#include "SmallPki.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>

namespace norvane::testing {
namespace {

using nlohmann::json;
using ::testing::HasSubstr;

std::set<std::string> members_of(const json& object) {
    std::set<std::string> names;
    for (const auto& [name, value] : object.items())
        names.insert(name);
    return names;
}

} // namespace

TEST(Verdict, OfEachSampleHasTheMembersOfTheSchemaAndTellsAll) {
    const json schema = json::parse(content_of(PROJECT_FOLDER "/docs/revcheck.schema.json"));
    const json table = json::parse(R"([
        {"subject": "good", "serial": "0x1000", "status": "good", "reason_code": null,
         "reason": null, "error": "0x00000000", "entry": null, "entry_in_delta": false},
        {"subject": "revoked", "serial": "0x1001", "status": "revoked", "reason_code": 1,
         "reason": "keyCompromise", "error": "0x80092010", "entry_in_delta": false,
         "entry": {"serial": "0x1001", "revocation_date": "2025-01-15T12:00:00Z"}},
        {"subject": "released", "serial": "0x1003", "status": "good", "reason_code": null,
         "reason": null, "error": "0x00000000", "entry_in_delta": true,
         "entry": {"serial": "0x1003", "revocation_date": "2025-02-14T12:00:00Z"}}])");
    const std::string people = "C=RU, O=Sample PKI, CN=";
    const std::string issuer = people + "Sample RSA Issuing CA";
    Arguments arguments = with_samples({"--json", "--time", "2025-03-02T00:00:00Z"});
    for (const json& row : table)
        arguments.push_back(examples + "rsa-" + row["subject"].get<std::string>() + ".pem");
    const auto verdicts = run_revcheck(arguments).verdicts();
    ASSERT_EQ(verdicts.size(), table.size());
    for (std::size_t i = 0; i < verdicts.size(); ++i) {
        json told = verdicts[i];
        EXPECT_EQ(members_of(told), schema["required"].get<std::set<std::string>>());
        for (const char* crl : {"base_crl", "delta_crl"}) {
            EXPECT_EQ(members_of(told[crl]), members_of(schema["$defs"]["crl"]["properties"]));
            told[crl].erase("next_update"); // twelve years after the samples were made
        }
        json expected = table[i];
        const std::string name = table[i]["subject"];
        expected.update(
            {{"certificate", arguments[arguments.size() - table.size() + i]},
             {"subject", (people + name).append(".example.org")},
             {"issuer", issuer},
             {"freshness_seconds", 86'400},
             {"time", "2025-03-02T00:00:00Z"},
             {"reasons", json::array()},
             {"requests", json::array()},
             {"base_crl",
              {{"number", "1"}, {"this_update", "2025-02-01T00:00:00Z"}, {"issuer", issuer}}},
             {"delta_crl",
              {{"number", "2"}, {"this_update", "2025-03-01T00:00:00Z"}, {"issuer", issuer}}}});
        EXPECT_EQ(told, expected);
    }
}

TEST(Verdict, TellsNumbersInFullAndThatThereIsNone) {
    const SmallPki pki;
    const std::string leaf = pki.write("leaf.der", {.spki = Key::ec(1).spki()});
    const auto check = [&](const CrlBuilder& crl) {
        const std::string file = pki.folder.write("a.crl", text(crl.sign(Key::ec(0))));
        return run_revcheck(pki.arguments({"--cache-only", "--crls", file, leaf})).verdicts().at(0);
    };
    Bytes twenty_octets(22, 0xff);
    twenty_octets[0] = 0x02;
    twenty_octets[1] = 20;
    twenty_octets[2] = 0x7f;
    EXPECT_EQ(check({.extensions = {crl_number(twenty_octets)}})["base_crl"]["number"],
              "730750818665451459101842416358141509827966271487");
    const json unnumbered = check({.entries = {{.serial = {0x01}}}});
    EXPECT_EQ(unnumbered["base_crl"]["number"], nullptr);
    EXPECT_EQ(unnumbered["reason_code"], 0) << "an entry without a reason";
}

TEST(Verdict, IsForTheMomentInEachWayToTellIt) {
    const char* const midnight[] = {"2026-01-31", "2026-01-31T03:00:00+03:00",
                                    "2026-01-30T19:30:00.5-04:30", "@1769817600"};
    for (const char* time : midnight) {
        const Ending ending =
            run_revcheck(with_samples({"--json", "--time", time, examples + "rsa-good.pem"}));
        EXPECT_EQ(ending.verdicts().at(0)["time"], "2026-01-31T00:00:00Z") << time;
    }
}

TEST(List, StopsAtTheFirstThatIsNotGoodAndTellsThoseBefore) {
    const std::string good = examples + "rsa-good.pem";
    const std::string revoked = examples + "rsa-revoked.pem";
    const Ending ending =
        run_revcheck(with_samples({"--json", "--list", good, good, revoked, good}));
    EXPECT_EQ(ending.code, 1);
    const auto verdicts = ending.verdicts();
    ASSERT_EQ(verdicts.size(), 3U);
    EXPECT_EQ(verdicts[1]["status"], "good");
    EXPECT_EQ(verdicts[1]["base_crl"], nullptr) << "details belong to the last one";
    EXPECT_EQ(verdicts[2]["status"], "revoked");
    EXPECT_EQ(verdicts[2]["base_crl"]["number"], "1");
    EXPECT_EQ(run_revcheck(with_samples({"--list", good, good})).code, 0);
}

} // namespace norvane::testing
