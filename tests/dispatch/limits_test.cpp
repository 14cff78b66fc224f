#include "CryptoObjects.h"
#include "Dispatch.h"

#include <thread>

namespace {

using namespace norvane::testing;

constexpr Outcome not_checked{FALSE, 0, CRYPT_E_NO_REVOCATION_CHECK};

// A verification that fails for its bytes, or for the quota.
DWORD verify_once() {
    static const auto provider = open_provider();
    static const auto hash = hash_of(provider, CALG_SHA_256, text_bytes("text"));
    // rsaEncryption with a modulus of 2,048 bits.
    static const auto key =
        KeyParts{"1.2.840.113549.1.1.1", null(),
                 sequence(integer_octets(cat(Bytes{0}, Bytes(256, 0xC1))), integer(65537))}
            .import_into(provider);
    return verify(hash, Bytes(256, 1), key);
}

} // namespace

TEST(DispatcherLimits, ACertificateUnderCheckOnTheThreadIsNotCheckedAgain) {
    EXPECT_TRUE(with_modules(MODULE_A, [] {
        // Same bytes at another address.
        Bytes copy(numbered(1)->pbCertEncoded,
                   numbered(1)->pbCertEncoded + numbered(1)->cbCertEncoded);
        const CERT_CONTEXT twin{X509_ASN_ENCODING, copy.data(), size_of(copy), nullptr, nullptr};
        std::vector<PCCERT_CONTEXT> asked;
        script_of(MODULE_A).check = [&](const Question& question) {
            asked.push_back(question.certificate);
            if (question.certificate == numbered(1)) {
                EXPECT_EQ(ask({numbered(2), &twin, numbered(3)}),
                          (Outcome{FALSE, 1, CRYPT_E_NO_REVOCATION_CHECK}));
                EXPECT_EQ(ask({numbered(4)}), (Outcome{TRUE, 0, ERROR_SUCCESS}));
                std::jthread([&] { // whatever another thread has at work
                    EXPECT_EQ(ask({numbered(2)}), (Outcome{TRUE, 0, ERROR_SUCCESS}));
                })
                    .join();
            }
            return answering(ERROR_SUCCESS)(question);
        };
        // Certificate 4 waits for its turn meanwhile, which is not being checked.
        EXPECT_TRUE(ask({numbered(1), numbered(4), numbered(1)}).result);
        using Asked = decltype(asked);
        const Asked one_turn{numbered(1), numbered(2), numbered(4), numbered(2)};
        Asked expected = one_turn;
        expected.push_back(numbered(4));
        expected.insert(expected.end(), one_turn.begin(), one_turn.end());
        EXPECT_EQ(asked, expected);
    }));
}

TEST(DispatcherLimits, CallsNestAsDeepAsTheStackHasRoom) {
    EXPECT_TRUE(with_modules(MODULE_A, [] {
        std::uint32_t depth = 0;
        script_of(MODULE_A).check = [&](const Question& question) {
            ++depth;
            auto* const number = reinterpret_cast<BYTE*>(&depth);
            Bytes other{number, number + sizeof depth};
            const CERT_CONTEXT next{X509_ASN_ENCODING, other.data(), sizeof depth, nullptr,
                                    nullptr};
            const Outcome inner = ask({&next});
            EXPECT_EQ(inner, not_checked);
            return answering(inner.error)(question);
        };
        pthread_attr_t small;
        pthread_attr_init(&small);
        pthread_attr_setstacksize(&small, std::size_t{512} * 1024);
        pthread_t thread{};
        const auto start = [](void*) -> void* {
            EXPECT_EQ(ask({numbered(1)}), not_checked);
            return nullptr;
        };
        ASSERT_EQ(pthread_create(&thread, &small, start, nullptr), 0);
        pthread_join(thread, nullptr);
        pthread_attr_destroy(&small);
        EXPECT_GT(depth, 10U);
    }));
}

TEST(DispatcherLimits, VerificationsOfNestedCallsCountAgainstTheOutermost) {
    EXPECT_TRUE(with_modules(
        both_modules,
        [] {
            constexpr DWORD bad = NTE_BAD_SIGNATURE;
            std::vector<DWORD> outcomes;
            int inner_calls = 0;
            const auto verify_twice = [&](const Question& question) {
                outcomes.push_back(verify_once());
                outcomes.push_back(verify_once());
                if (question.certificate == numbered(1)) {
                    EXPECT_EQ(ask({numbered(2)}), not_checked);
                } else {
                    ++inner_calls;
                }
                return answering(CRYPT_E_NO_REVOCATION_CHECK)(question);
            };
            script_of(MODULE_A).check = verify_twice;
            script_of(MODULE_B).check = verify_twice;
            for (int repeat = 0; repeat < 2; ++repeat) {
                outcomes.clear();
                inner_calls = 0;
                EXPECT_EQ(ask({numbered(1)}), not_checked);
                // A for 1, A and B for 2, and B for 1, whose nested call asks nobody any more.
                EXPECT_EQ(outcomes,
                          (std::vector<DWORD>{bad, bad, bad, bad, bad, ERROR_NOT_ENOUGH_QUOTA,
                                              ERROR_NOT_ENOUGH_QUOTA, ERROR_NOT_ENOUGH_QUOTA}));
                EXPECT_EQ(inner_calls, 2);
            }
            for (int repeat = 0; repeat < 20; ++repeat) {
                EXPECT_EQ(verify_once(), bad); // outside of the dispatcher
            }
        },
        "[limits]\nsignature_verifications = 5\n"));
}
