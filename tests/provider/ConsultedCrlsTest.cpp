// Which of the consulted CRLs are handed out, and how old what they say is.
#include "provider/ConsultedCrls.h"

#include "chain/World.h"

namespace norvane::testing {
namespace {

// Begins on a day of June 2026 and ends on one of July.
Bytes crl_of(int begins, int ends) {
    const auto midnight = [](std::string day) { return utc_time(day + "000000Z"); };
    return list(root, {revoked(1)}, {},
                {.this_update = midnight("26060" + std::to_string(begins)),
                 .next_update = midnight("26070" + std::to_string(ends))});
}

TEST(ConsultedCrls, AreAsOldAsTheEarliestAndHandedOutByTheFirstToExpire) {
    struct Days {
        int base;
        int delta = 0; // none
    };
    const struct {
        std::vector<Days> pairs;
        std::size_t chosen;
    } rows[] = {
        {{{5}, {3}}, 1},       {{{3}, {3}}, 0},
        {{{3, 9}, {5, 7}}, 1}, // by the deltas if the later pair has one
        {{{3, 4}, {5}}, 0},    // and else by the bases,
        {{{5, 2}, {3}}, 1},    // whatever the delta of the other is
        {{{5}, {9, 3}}, 1},    {{{5}, {1, 7}}, 0},
    };
    const CertificateContext certificate = certificate_context(certify_subject(root));
    for (const auto& row : rows) {
        World world;
        CertificateCacheInfo info;
        std::vector<CrlPair> pairs;
        for (const Days& days : row.pairs) {
            pairs.push_back(
                {&world.enter_crl(crl_of(days.base, days.base)),
                 days.delta == 0 ? nullptr : &world.enter_crl(crl_of(days.delta, days.delta))});
            info.crl_pairs.emplace(pairs.back().base, pairs.back().delta);
        }
        const Days days = row.pairs[row.chosen];
        const int issued = days.delta == 0 ? days.base : days.delta;
        set_time(world.chain.verify_time, {2026, 6, 0, 20, 0, 0, 1, 0});
        EXPECT_EQ(freshness_seconds(info.crl_pairs, world.chain.verify_time),
                  static_cast<std::uint32_t>((20 - issued) * 86'400 + 1));
        const CrlPair chosen = pairs[row.chosen];
        EXPECT_EQ(pair_to_hand_out(info).base, chosen.base);
        EXPECT_EQ(pair_to_hand_out(info).delta, chosen.delta);
        // All of them list the certificate. A delta is handed out if the first pair has one, too.
        CERT_REVOCATION_CRL_INFO out{};
        ASSERT_TRUE(hand_out_crls(out, certificate.get(), info));
        const CrlContext base(out.pBaseCrlContext);
        const CrlContext delta(out.pDeltaCrlContext);
        EXPECT_EQ(delta != nullptr, chosen.delta != nullptr && row.pairs.front().delta != 0);
        EXPECT_EQ(out.fDeltaCrlEntry != FALSE, delta != nullptr);
        set_time(world.chain.verify_time, {2026, 6, 0, 1, 0, 0, 0, 0});
        EXPECT_EQ(freshness_seconds(info.crl_pairs, world.chain.verify_time), 0U) << "not issued";

        info.deciding_base_crl = pairs.front().base;
        EXPECT_EQ(pair_to_hand_out(info).base, pairs.front().base) << "what decided goes first";
        EXPECT_EQ(pair_to_hand_out(info).delta, nullptr);
    }
}

} // namespace
} // namespace norvane::testing
