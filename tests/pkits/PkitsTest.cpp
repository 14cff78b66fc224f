// The decision about every case of the public test suite PKITS that concerns it.
#include "platform/StoreMaterial.h"
#include "support/RecordWalk.h"

#include <norvane/revocation.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace norvane::testing {
namespace {

const std::filesystem::path pack = PKITS;
constexpr const char* anchor = "TrustAnchorRootCertificate.crt";

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream in(text);
    for (std::string part; std::getline(in, part, separator);)
        parts.push_back(part);
    return parts;
}

Bytes read(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    Bytes bytes{std::istreambuf_iterator<char>(in), {}};
    EXPECT_FALSE(bytes.empty()) << file;
    return bytes;
}

// A line of cases.tsv.
struct Case {
    std::string test, end_entity, trust_anchor;
    std::vector<std::string> intermediates, crls;
    std::vector<std::string> decisions; // each of them is right
};

std::vector<Case> read_cases() {
    std::vector<Case> cases;
    std::ifstream in(pack / "cases.tsv");
    std::string line;
    std::getline(in, line);
    while (std::getline(in, line)) {
        const auto columns = split(line, '\t');
        cases.push_back({columns.at(0),
                         columns.at(2),
                         columns.at(5),
                         split(columns.at(3), ','),
                         split(columns.at(4), ','),
                         {columns.at(8)}});
        if (columns[8].ends_with('?')) { // "EITHER one OR the other: ..."
            const auto words = split(columns.at(9), ' ');
            cases.back().decisions = {words.at(1), words.at(3).substr(0, words.at(3).rfind(':'))};
        }
    }
    return cases;
}

std::string decide(const Case& row) {
    const OpenStore certificates = OpenStore::memory();
    const OpenStore crls = OpenStore::memory();
    for (const std::string& file : row.intermediates)
        EXPECT_TRUE(certificates.add(read(pack / "certs" / file))) << file;
    for (const std::string& file : row.crls)
        EXPECT_TRUE(crls.add_crl(read(pack / "crls" / file))) << file;
    const CertificateContext context = certificate_context(read(pack / "certs" / row.end_entity));
    void* contexts[] = {const_cast<CERT_CONTEXT*>(context.get())};
    HCERTSTORE cert_stores[] = {certificates.get()};
    const SYSTEMTIME fields{2012, 6, 0, 1, 0, 0, 0, 0};
    FILETIME time{};
    EXPECT_TRUE(SystemTimeToFileTime(&fields, &time));
    CERT_REVOCATION_PARA para{};
    para.cbSize = sizeof para;
    para.cCertStore = 1;
    para.rgCertStore = cert_stores;
    para.hCrlStore = crls.get();
    para.pftTimeToUse = &time;
    CERT_REVOCATION_STATUS status{};
    status.cbSize = sizeof status;
    if (CertDllVerifyRevocation(X509_ASN_ENCODING, CERT_CONTEXT_REVOCATION_TYPE, 1, contexts, 0,
                                &para, &status))
        return "good";
    return status.dwError == static_cast<DWORD>(CRYPT_E_REVOKED)
               ? "revoked:" + std::to_string(status.dwReason)
               : "no_check";
}

class Pkits : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        for (const auto& [section, key, value] :
             {std::tuple("stores", "Root", (pack / "certs" / anchor).string()),
              std::tuple("stores", "CA", (pack / "absent").string()),
              std::tuple("retrieval", "schemes", std::string("file"))})
            EXPECT_TRUE(NorvaneSetConfiguration(section, key, value.c_str()));
    }
    void SetUp() override {
        if (!exists(pack / "cases.tsv"))
            GTEST_SKIP() << "no PKITS pack in " << pack;
    }
};

TEST_F(Pkits, EachCaseIsDecidedAsItMustBeAndEachTimeInTheSameWay) {
    const auto cases = read_cases();
    EXPECT_EQ(cases.size(), 103U);
    for (const Case& row : cases) {
        EXPECT_EQ(row.trust_anchor, anchor);
        const std::string decision = decide(row);
        EXPECT_NE(std::ranges::find(row.decisions, decision), row.decisions.end())
            << row.test << ": " << decision << ", not " << row.decisions.front();
        const RecordWalk walk;
        EXPECT_EQ(decide(row), decision) << row.test << " with a listener";
        EXPECT_EQ(walk.open_branches(), 0U) << row.test;
        EXPECT_EQ(walk.outcome(), decision == "good"       ? "good"
                                  : decision == "no_check" ? "not_checked"
                                                           : "revoked")
            << row.test;
    }
}

// Where the order of two CRLs matters, either of them alone is certain.
TEST_F(Pkits, EitherOfTwoCrlsIsCertain) {
    const struct {
        const char* test;
        const char* with_compromise_crl;
        const char* with_the_other;
    } rows[] = {{"4.14.15", "revoked:1", "no_check"},
                {"4.14.16", "no_check", "revoked:6"},
                {"4.14.20", "revoked:1", "no_check"},
                {"4.14.21", "no_check", "revoked:3"}};
    const auto cases = read_cases();
    for (const auto& row : rows) {
        Case with_one = *std::ranges::find(cases, row.test, &Case::test);
        const auto crls = with_one.crls;
        with_one.crls = {crls.at(0), crls.at(1)};
        EXPECT_EQ(decide(with_one), row.with_compromise_crl) << row.test;
        with_one.crls = {crls.at(0), crls.at(2)};
        EXPECT_EQ(decide(with_one), row.with_the_other) << row.test;
    }
}

} // namespace
} // namespace norvane::testing
