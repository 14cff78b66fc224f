// What is decided, and what is told about it to programs.
#include "Program.h"
#include "SmallPki.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>

namespace norvane::testing {
namespace {

using nlohmann::json;
using ::testing::HasSubstr;

// Whether the value is this one, or one of these.
bool is_among(const json& value, const json& these) {
    return value == these ||
           (these.is_array() && std::find(these.begin(), these.end(), value) != these.end());
}

// The parts of JSON Schema that docs/revcheck.schema.json uses. Gives the first fault, or nothing.
std::string fault_in(const json& value, const json& schema, const json& whole) {
    if (schema.contains("$ref")) {
        const auto path = schema["$ref"].get<std::string>().substr(1);
        return fault_in(value, whole.at(json::json_pointer(path)), whole);
    }
    const std::string shown = value.dump();
    if (schema.contains("enum") && !is_among(value, schema["enum"])) {
        return shown + " is none of the words";
    }
    const std::string kind = value.is_number_integer() ? "integer" : value.type_name();
    if (schema.contains("type") && !is_among(kind, schema["type"])) {
        return shown + " is of another type";
    }
    if (schema.contains("pattern") && value.is_string() &&
        !std::regex_match(value.get<std::string>(), std::regex(schema["pattern"]))) {
        return shown + " does not fit the pattern";
    }
    if (!value.is_object()) {
        return {};
    }
    for (const json& name : schema["required"]) {
        if (!value.contains(name)) {
            return shown + " lacks " + name.dump();
        }
    }
    for (const auto& [name, member] : value.items()) {
        const std::string fault = !schema["properties"].contains(name)
                                      ? "there is no " + name
                                      : fault_in(member, schema["properties"][name], whole);
        if (!fault.empty()) {
            return fault;
        }
    }
    return {};
}

std::string fault_in(const json& verdict) {
    static const json schema = json::parse(content_of(PROJECT_FOLDER "/docs/revcheck.schema.json"));
    return fault_in(verdict, schema, schema);
}

} // namespace

TEST(Verdict, OfEachSampleIsToldAsTheSchemaSays) {
    struct Expected {
        std::string name;
        std::string status;
        json reason_code;
        json reason;
        std::string error;
        bool entry_in_delta;
        json date;
    };
    const Expected table[] = {
        {"good", "good", nullptr, nullptr, "0x00000000", false, nullptr},
        {"revoked", "revoked", 1, "keyCompromise", "0x80092010", false, "-01-15T12:00:00Z"},
        {"revoked-since", "revoked", 5, "cessationOfOperation", "0x80092010", true,
         "-02-14T12:00:00Z"},
        {"released", "good", nullptr, nullptr, "0x00000000", true, "-02-14T12:00:00Z"},
    };
    for (const std::string kind : {"rsa", "gost"}) {
        Arguments arguments = with_samples({"--json"});
        for (const Expected& each : table) {
            arguments.push_back(examples + kind + "-" + each.name + ".pem");
        }
        const Ending ending = run_revcheck(arguments);
        EXPECT_EQ(ending.code, 1) << ending.err;
        const auto verdicts = ending.verdicts();
        ASSERT_EQ(verdicts.size(), std::size(table));
        for (std::size_t i = 0; i < verdicts.size(); ++i) {
            const json& told = verdicts[i];
            const Expected& expected = table[i];
            SCOPED_TRACE(told.dump());
            EXPECT_EQ(fault_in(told), "");
            EXPECT_EQ(told["status"], expected.status);
            EXPECT_EQ(told["reason_code"], expected.reason_code);
            EXPECT_EQ(told["reason"], expected.reason);
            EXPECT_EQ(told["error"], expected.error);
            EXPECT_EQ(told["base_crl"]["number"], "1");
            EXPECT_EQ(told["delta_crl"]["number"], "2");
            EXPECT_EQ(told["entry_in_delta"], expected.entry_in_delta);
            EXPECT_EQ(told["entry"].is_null(), expected.date.is_null());
            if (!expected.date.is_null()) {
                EXPECT_EQ(told["entry"]["serial"], told["serial"]);
                EXPECT_THAT(told["entry"]["revocation_date"].get<std::string>(),
                            ::testing::EndsWith(expected.date.get<std::string>()));
            }
        }
    }
}

TEST(Verdict, TellsNumbersAndTimesInFull) {
    const SmallPki pki;
    const Bytes twenty_octets = {0x02, 20,   0x7f, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff,
                                 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
    const json told = pki.check({.extensions = {crl_number(twenty_octets)}});
    EXPECT_EQ(told["base_crl"]["number"], "730750818665451459101842416358141509827966271487");
    EXPECT_EQ(told["base_crl"]["this_update"], "2026-03-01T00:00:00Z");
    EXPECT_EQ(told["freshness_seconds"], 92 * 86'400);

    const json unnumbered = pki.check({.entries = {{.serial = {0x01}}}});
    EXPECT_EQ(unnumbered["base_crl"]["number"], nullptr);
    EXPECT_EQ(unnumbered["reason_code"], 0) << "an entry without a reason";
    EXPECT_EQ(fault_in(unnumbered), "");
}

TEST(NoCheck, IsToldWithWhatIsMissing) {
    const std::string root = examples + "stores/Root/rsa-root.pem";
    const std::string ca = examples + "stores/CA/rsa-issuing-ca.pem";
    const std::string crl = examples + "stores/CA/rsa-issuing-ca.crl";
    const std::string delta = examples + "stores/CA/rsa-issuing-ca-delta.crl";
    const std::string root_crl = examples + "stores/CA/rsa-root.crl";
    const std::string gost_root = examples + "stores/Root/gost-root.pem";
    const TemporaryFolder empty;
    const std::string none = empty.path();
    const struct {
        Arguments arguments;
        std::string line;
    } table[] = {
        {{"--root", root, "--ca", none}, "no certificate of C=RU, O=Sample PKI, CN=Sample RSA Is"},
        {{"--root", root, "--ca", ca}, "no CRL of C=RU, O=Sample PKI, CN=Sample RSA Issuing CA"},
        {{"--root", root, "--ca", ca, "--ca", crl}, "must be completed by a delta CRL"},
        {{"--root", root, "--ca", ca, "--crls", crl, "--crls", delta},
         "no CRL of C=RU, O=Sample PKI, CN=Sample RSA Root CA"},
        {{"--root", gost_root, "--certs", root, "--ca", examples + "stores/CA"},
         "the path ends at C=RU, O=Sample PKI, CN=Sample RSA Root CA, which is not in the store"},
        {{"--root", root, "--ca", examples + "stores/CA", "--time", "2025-01-20T00:00:00Z"},
         "begins at 2025-03-01T00:00:00Z, after the time of the check"},
        {{"--root", root, "--ca", examples + "stores/CA", "--time", "2024-12-31T23:59:59Z"},
         "is valid from 2025-01-01T00:00:00Z to"},
    };
    for (const auto& [arguments, line] : table) {
        Arguments all{"--cache-only", examples + "rsa-good.pem"};
        all.insert(all.begin(), arguments.begin(), arguments.end());
        const Ending ending = run_revcheck(all);
        EXPECT_EQ(ending.code, 2) << ending.err;
        EXPECT_THAT(ending.out, HasSubstr("NO CHECK  " + examples + "rsa-good.pem\n"));
        EXPECT_THAT(ending.out, HasSubstr(line));
        EXPECT_EQ(ending.err, "");
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
    EXPECT_EQ(fault_in(verdicts[0]), "");
    EXPECT_EQ(run_revcheck(with_samples({"--list", good, good})).code, 0);
}

} // namespace norvane::testing
