#include "Dispatch.h"
#include "support/AllocationCounter.h"

#include <chrono>
#include <thread>

namespace {

using namespace norvane::testing;

constexpr DWORD no_check = CRYPT_E_NO_REVOCATION_CHECK;
constexpr DWORD offline = CRYPT_E_REVOCATION_OFFLINE;
constexpr DWORD unlisted = CRYPT_E_NOT_IN_REVOCATION_DATABASE;

// Contents of CERT_REVOCATION_CRL_INFO that are references of their own.
void give_crls(CERT_REVOCATION_CRL_INFO& info, const Bytes& base, const Bytes& delta) {
    info.pBaseCrlContext = crl_context(base).release();
    info.pDeltaCrlContext = crl_context(delta).release();
    info.fDeltaCrlEntry = TRUE;
}

Bytes bytes_of(const CrlContext& crl) {
    return {crl->pbCrlEncoded, crl->pbCrlEncoded + crl->cbCrlEncoded};
}

} // namespace

TEST(CertVerifyRevocation, ReportsTheVerdictOrTheMostTellingReasonForNone) {
    struct Answer {
        DWORD error, reason, freshness;
    };
    struct Case {
        Answer first, second;
        Outcome expected;
        bool second_asked = true;
    };
    const Case cases[] = {
        {{ERROR_SUCCESS, 3, 7}, {}, {TRUE, 0, ERROR_SUCCESS, 0, 7}, false},
        {{CRYPT_E_REVOKED, 4, 7}, {}, {FALSE, 0, CRYPT_E_REVOKED, 4, 7}, false},
        {{no_check, 0, 7}, {ERROR_SUCCESS, 0, 0}, {TRUE, 0, ERROR_SUCCESS}},
        {{offline, 0, 0}, {CRYPT_E_REVOKED, 1, 8}, {FALSE, 0, CRYPT_E_REVOKED, 1, 8}},
        {{offline, 0, 7}, {no_check, 0, 8}, {FALSE, 0, offline, 0, 7}},
        {{no_check, 3, 7}, {offline, 0, 8}, {FALSE, 0, offline, 0, 8}},
        {{unlisted, 0, 7}, {offline, 0, 8}, {FALSE, 0, offline, 0, 8}},
        {{no_check, 0, 7}, {unlisted, 0, 8}, {FALSE, 0, unlisted, 0, 8}},
        {{no_check, 0, 7}, {no_check, 0, 8}, {FALSE, 0, no_check, 0, 7}},
        {{E_INVALIDARG, 0, 7}, {unlisted, 0, 0}, {FALSE, 0, unlisted}},
        {{E_INVALIDARG, 0, 0}, {0x1234, 0, 0}, {FALSE, 0, no_check}},
    };
    EXPECT_TRUE(with_modules(both_modules, [&] {
        for (const Case& row : cases) {
            bool second_asked = false;
            script_of(MODULE_A).check =
                answering(row.first.error, row.first.reason, row.first.freshness);
            script_of(MODULE_B).check = [&](const Question& question) {
                second_asked = true;
                return answering(row.second.error, row.second.reason,
                                 row.second.freshness)(question);
            };
            EXPECT_EQ(ask({numbered(1)}), row.expected);
            EXPECT_EQ(second_asked, row.second_asked);
        }
    }));
}

TEST(CertVerifyRevocation, AsksForEachCertificateUntilOneIsNotGood) {
    EXPECT_TRUE(with_modules(both_modules, [] {
        // The first module knows certificates 1 and 3, the second one 2 and, as revoked, 4.
        std::vector<std::pair<char, PCCERT_CONTEXT>> asked;
        const auto knows = [&](char name, std::uint8_t good, std::uint8_t also, DWORD what) {
            return [=, &asked](const Question& question) {
                asked.emplace_back(name, question.certificate);
                return answering(question.certificate == numbered(good)   ? ERROR_SUCCESS
                                 : question.certificate == numbered(also) ? what
                                                                          : no_check)(question);
            };
        };
        script_of(MODULE_A).check = knows('A', 1, 3, ERROR_SUCCESS);
        script_of(MODULE_B).check = knows('B', 2, 4, CRYPT_E_REVOKED);
        EXPECT_EQ(ask({numbered(1), numbered(2), numbered(3)}), (Outcome{TRUE, 2, ERROR_SUCCESS}));
        EXPECT_EQ(
            asked,
            (decltype(asked){
                {'A', numbered(1)}, {'A', numbered(2)}, {'B', numbered(2)}, {'A', numbered(3)}}));
        EXPECT_EQ(ask({numbered(2), numbered(4), numbered(1)}),
                  (Outcome{FALSE, 1, CRYPT_E_REVOKED}));
        EXPECT_EQ(ask({numbered(3), numbered(1), numbered(5)}), (Outcome{FALSE, 2, no_check}));

        std::vector<PCCERT_CONTEXT> hints;
        script_of(MODULE_A).check = [&](const Question& question) {
            hints.push_back(question.para.pIssuerCert);
            return answering(ERROR_SUCCESS)(question);
        };
        EXPECT_TRUE(ask({numbered(1), numbered(2)}, CERT_VERIFY_REV_CHAIN_FLAG).result);
        EXPECT_EQ(hints, (decltype(hints){numbered(2), nullptr}));

        EXPECT_EQ(ask({}), (Outcome{FALSE, 0, E_INVALIDARG}));
        EXPECT_EQ(ask({numbered(1), nullptr}), (Outcome{FALSE, 0, E_INVALIDARG}));
    }));
}

TEST(CertVerifyRevocation, ReadsAndWritesOnlyFieldsThatAreThere) {
    EXPECT_TRUE(with_modules(MODULE_A, [] {
        script_of(MODULE_A).check = answering(CRYPT_E_REVOKED, 5, 7);
        PVOID context = const_cast<CERT_CONTEXT*>(numbered(1));
        for (const DWORD size : {15U, 16U, 19U, 20U, 23U, 24U}) {
            CERT_REVOCATION_STATUS status{size, 99, 99, 99, 99, 99};
            EXPECT_FALSE(CertVerifyRevocation(X509_ASN_ENCODING, CERT_CONTEXT_REVOCATION_TYPE, 1,
                                              &context, 0, nullptr, &status));
            EXPECT_EQ(GetLastError(), size < 16 ? E_INVALIDARG : CRYPT_E_REVOKED);
            EXPECT_EQ(status.dwReason, size < 16 ? 99U : 5U);
            EXPECT_EQ(status.fHasFreshnessTime, size < 20 ? 99 : TRUE);
            EXPECT_EQ(status.dwFreshnessTime, size < 24 ? 99U : 7U);
        }

        struct Case {
            DWORD given, seen;
            bool hint, crl_store, crls;
        };
        for (const Case& row : {
                 Case{15, 48, false, false, false},
                 Case{39, 48, true, false, false},
                 Case{51, 48, true, true, false},
                 Case{79, 72, true, true, false},
                 Case{80, 80, true, true, true},
                 Case{200, 96, true, true, true},
             }) {
            CERT_REVOCATION_CRL_INFO crl_info{36, nullptr, nullptr, nullptr, 0};
            CERT_REVOCATION_PARA para{};
            para.cbSize = row.given;
            para.pIssuerCert = numbered(2);
            para.hCrlStore = &para;
            para.pCrlInfo = &crl_info;
            script_of(MODULE_A).check = [&](const Question& question) {
                EXPECT_EQ(question.para.cbSize, row.seen) << row.given;
                EXPECT_EQ(question.para.pIssuerCert != nullptr, row.hint) << row.given;
                EXPECT_EQ(question.para.hCrlStore != nullptr, row.crl_store) << row.given;
                EXPECT_EQ(question.para.pCrlInfo != nullptr, row.crls) << row.given;
                question.para.hCrlStore = nullptr; // no later question may see this
                return answering(ERROR_SUCCESS)(question);
            };
            EXPECT_TRUE(ask({numbered(1), numbered(2)}, 0, &para).result);
            crl_info.cbSize = 35;
            script_of(MODULE_A).check = [](const Question& question) {
                EXPECT_EQ(question.para.pCrlInfo, nullptr);
                return answering(ERROR_SUCCESS)(question);
            };
            EXPECT_TRUE(ask({numbered(1)}, 0, &para).result);
        }
    }));
}

TEST(CertVerifyRevocation, HandsOutTheCrlsOfTheVerdictAndReleasesAllOthers) {
    EXPECT_TRUE(with_modules(both_modules, [] {
        constexpr std::uint32_t entries = 10'000;
        const Bytes first = large_crl(entries, Key::ec(0));
        const Bytes second = large_crl(entries, Key::ec(1));
        const Bytes third = large_crl(entries, Key::ec(2));
        script_of(MODULE_A).check = [&](const Question& question) {
            EXPECT_EQ(question.para.pCrlInfo->pBaseCrlContext, nullptr);
            EXPECT_EQ(question.para.pCrlInfo->pDeltaCrlContext, nullptr);
            give_crls(*question.para.pCrlInfo, first, second);
            return answering(question.certificate == numbered(2) ? ERROR_SUCCESS
                                                                 : no_check)(question);
        };
        script_of(MODULE_B).check = [&](const Question& question) {
            EXPECT_EQ(question.para.pCrlInfo->pDeltaCrlContext, nullptr);
            give_crls(*question.para.pCrlInfo, second, third);
            return answering(question.certificate == numbered(1) ? CRYPT_E_REVOKED
                                                                 : no_check)(question);
        };
        struct Case {
            std::vector<PCCERT_CONTEXT> certificates;
            const Bytes* base;
            const Bytes* delta;
        };
        for (const auto& [certificates, base, delta] :
             {Case{{numbered(2)}, &first, &second},
              Case{{numbered(2), numbered(1)}, &second, &third},
              Case{{numbered(2), numbered(3)}, nullptr, nullptr}, Case{{}, nullptr, nullptr}}) {
            CERT_REVOCATION_CRL_INFO crl_info{};
            crl_info.cbSize = sizeof crl_info;
            crl_info.pDeltaCrlContext = crl_context(third).release(); // stale, a reference
            CERT_REVOCATION_PARA para{};
            para.cbSize = sizeof para;
            para.pCrlInfo = &crl_info;
            ask(certificates, 0, &para);
            const CrlContext base_context(crl_info.pBaseCrlContext);
            const CrlContext delta_context(crl_info.pDeltaCrlContext);
            ASSERT_EQ(base_context != nullptr, base != nullptr);
            ASSERT_EQ(delta_context != nullptr, delta != nullptr);
            EXPECT_EQ(crl_info.fDeltaCrlEntry, base != nullptr);
            if (base != nullptr) {
                EXPECT_EQ(bytes_of(base_context), *base);
                EXPECT_EQ(bytes_of(delta_context), *delta);
            }
        }
        // While a reference is left, a context over the same bytes costs no memory.
        for (const Bytes* crl : {&first, &second, &third}) {
            const norvane::testing::AllocationCounter memory;
            const CrlContext context = crl_context(*crl);
            EXPECT_GT(memory.bytes(), crl->size());
        }
    }));
}

TEST(CertVerifyRevocation, LetsModulesShareAnAccumulativeTimeOut) {
    EXPECT_TRUE(with_modules(both_modules, [] {
        struct Seen {
            DWORD timeout, flags;
        } first{}, second{};
        const auto spending = [](std::chrono::milliseconds time, Seen& seen) {
            return [&, time](const Question& question) {
                seen = {question.para.dwUrlRetrievalTimeout, question.flags};
                std::this_thread::sleep_for(time);
                return answering(no_check)(question);
            };
        };
        constexpr DWORD accumulative = CERT_VERIFY_REV_ACCUMULATIVE_TIMEOUT_FLAG;
        constexpr DWORD cache_only = CERT_VERIFY_CACHE_ONLY_BASED_REVOCATION;
        CERT_REVOCATION_PARA para{};
        para.cbSize = sizeof para;
        const auto run = [&](DWORD timeout, DWORD flags, std::chrono::milliseconds spent) {
            script_of(MODULE_A).check = spending(spent, first);
            script_of(MODULE_B).check = spending({}, second);
            para.dwUrlRetrievalTimeout = timeout;
            ask({numbered(1)}, flags, &para);
        };
        using namespace std::chrono_literals;
        run(100'000, accumulative, 20ms);
        EXPECT_GT(first.timeout, 99'000U);
        EXPECT_LE(second.timeout, 100'000U - 20);
        EXPECT_GT(second.timeout, 90'000U);
        EXPECT_EQ(second.flags, accumulative);
        run(10, accumulative, 20ms);
        EXPECT_EQ(second.timeout, 0U);
        EXPECT_EQ(second.flags, cache_only) << "a budget of nothing shuts the cache, too";
        run(10, 0, 20ms);
        EXPECT_EQ(second.timeout, 10U);
        EXPECT_EQ(second.flags, 0U);
        run(0, accumulative, 0ms); // the module's own default
        EXPECT_EQ(second.timeout, 0U);
        EXPECT_EQ(second.flags, accumulative);
        run(0, accumulative | cache_only, 0ms);
        EXPECT_EQ(first.flags, cache_only);
    }));
}
