// CRLs from URLs.
#include "World.h"
#include "chain/CrlRetrieval.h"
#include "values/Exceptions.h"

namespace norvane::testing {
namespace {

Bytes with_points(const std::vector<DistributionPoint>& points,
                  const std::vector<DistributionPoint>& freshest = {{.full_name = {url("c")}}}) {
    return certify_subject(root, {crl_distribution_points(points), freshest_crl(freshest)});
}

TEST(CrlRetrieval, AsksEachUrlOnceAPassInOrderAndFilesWhatComes) {
    const Bytes name = directory_name(common_name("Root"));
    const Bytes certificate = with_points({{.full_name = {url("a"), name, url("b")}},
                                           {.relative_name = {{"2.5.4.3", printable("x")}}},
                                           {.crl_issuer = {name}},
                                           {.full_name = {url("a")}}},
                                          {{.full_name = {url("c"), url("b")}}});
    const Bytes full = list(root);
    const Bytes full_of_freshest = list(other);
    const Bytes delta = list(root, {}, {delta_crl_indicator(integer(1))});
    World world;
    const CertificateItem& item = world.enter(certificate).first;
    faked.served = {{"a", {delta, full}}, {"c", {full_of_freshest, delta}}};
    faked.cached = {{"b", {full}}};
    CrlBaseSet base;
    DeltaCrlMap deltas;
    const auto retrieve = [&](DWORD flags) {
        retrieve_crls_for_certificate(world.chain, item, base, deltas, flags);
    };
    const auto asked = [](DWORD flags) {
        return std::vector<Retrieval>{{"a", flags}, {"b", flags}, {"c", flags}};
    };

    retrieve(CRYPT_CACHE_ONLY_RETRIEVAL);
    EXPECT_EQ(faked.retrievals, asked(3));
    EXPECT_EQ(base.size(), 1U);
    EXPECT_EQ(GetLastError(), 0U) << "of the retrievals that failed";
    retrieve(0);
    EXPECT_EQ(faked.retrievals.size(), 3U) << "what has failed was tried, too";

    world.chain.retrieved_urls.clear();
    faked.retrievals.clear();
    retrieve(0);
    EXPECT_EQ(faked.retrievals, asked(1));
    EXPECT_EQ(base.size(), 2U);
    ASSERT_EQ(deltas.size(), 1U);
    EXPECT_EQ(deltas.begin()->second.begin()->second.size(), 1U);
    EXPECT_EQ(world.chain.crl_item_cache.size(), 3U);
}

TEST(CrlRetrieval, SharesTheTimeOutAndChargesASuccessTwiceInAccumulativeMode) {
    constexpr std::uint32_t shared = chain_accumulative_timeout;
    const struct {
        std::uint32_t flags, timeout, spent; // milliseconds
        bool served;
        std::vector<DWORD> timeouts;
        std::uint32_t spent_then;
    } rows[] = {
        {shared, 5000, 0, true, {5000, 900}, 8200},
        {shared, 5000, 0, false, {5000, 3000, 1000}, 6000},
        {shared, 5000, 5000, true, {}, 5000},
        {shared, 0, 0, true, {}, 0},
        {0, 5000, 0, true, {5000, 5000, 5000}, 0},
        {0, 0, 0, true, {0, 0, 0}, 0},
    };
    const Bytes certificate = with_points({{.full_name = {url("a"), url("b")}}});
    CrlBaseSet base;
    DeltaCrlMap deltas;
    for (const auto& row : rows) {
        World world;
        faked.clock = 0;
        faked.retrieval_takes = 2000;
        faked.reading_takes = 100;
        if (row.served)
            faked.served = {{"a", {}}, {"b", {}}, {"c", {}}};
        world.chain.chain_flags |= row.flags;
        world.chain.retrieval_timeout = from_milliseconds(row.timeout);
        world.chain.timeout_spent = from_milliseconds(row.spent);
        retrieve_crls_for_certificate(world.chain, world.enter(certificate).first, base, deltas, 0);
        std::vector<DWORD> timeouts;
        for (const Retrieval& retrieval : faked.retrievals)
            timeouts.push_back(retrieval.timeout);
        EXPECT_EQ(timeouts, row.timeouts) << &row - rows;
        EXPECT_EQ(world.chain.timeout_spent, from_milliseconds(row.spent_then)) << &row - rows;
        EXPECT_EQ(world.chain.retrieved_urls.size(), 3U) << &row - rows;
    }
    for (const bool set_back : {true, false}) { // the clock, or a time-out that is too long
        World world;
        faked.clock = 0;
        faked.retrieval_takes = -1;
        world.chain.chain_flags |= set_back ? shared : 0;
        world.chain.retrieval_timeout = from_milliseconds(set_back ? 1 : 0x7FFFFFFF);
        EXPECT_THROW(retrieve_crls_for_certificate(world.chain, world.enter(certificate).first,
                                                   base, deltas, 0),
                     CAException);
    }
}

} // namespace
} // namespace norvane::testing
