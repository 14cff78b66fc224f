#include "items/ItemCache.h"

#include "Material.h"

#include <gtest/gtest.h>

namespace norvane {
namespace {

using namespace testing;

TEST(ItemCache, EqualBytesAreOneItemInWhateverFormTheyCome) {
    ItemCache certificates;
    CertificateItem item = certificate({});
    static_cast<void>(item.subject_name());
    auto& pair = cache_certificate(certificates, item, {});
    EXPECT_EQ(pair.first.subject_name().encoded, item.subject_name().encoded);
    EXPECT_FALSE(pair.first.is_decoded()) << "the name came with the copy";
    pair.second.revocation_good = true;
    EXPECT_EQ(&cache_certificate(certificates, std::move(item), {}), &pair);
    EXPECT_NE(item.encoded().length, 0U) << "a known item is not taken";
    EXPECT_TRUE(pair.second.revocation_good);

    CrlItemCache crls;
    const CRLItem list = crl(std::vector<Bytes>{});
    auto& crl_pair = cache_crl(crls, list, CRLCacheInfo());
    CRLCacheInfo other;
    other.crl_issuer = &pair.first;
    EXPECT_EQ(&cache_crl(crls, list, other), &crl_pair);
    EXPECT_EQ(crl_pair.second.crl_issuer, nullptr) << "a known CRL keeps its info";
}

TEST(ItemCache, TrustIsGainedAndNeverLost) {
    ItemCache map;
    auto& pair = cache_certificate(map, certificate({}), {});
    for (const auto& [trusted, then] : {std::pair(false, false), {true, true}, {false, true}}) {
        CertificateCacheInfo info;
        info.trusted = trusted;
        cache_certificate(map, CertificateItem(pair.first), info);
        EXPECT_EQ(pair.second.trusted, then);
    }
}

TEST(ItemCache, SetsWalkInTheOrderOfDiscovery) {
    CrlItemCache map;
    std::vector<const CRLItem*> discovered;
    for (const Bytes& bytes : {Bytes{5, 5, 5}, Bytes{7}, Bytes{1}}) {
        const CRLItem item(blob(bytes));
        discovered.push_back(&cache_crl(map, item, {}).first);
    }
    cache_crl(map, view({5, 5, 5}), {});
    const CrlItemSet set{discovered[1], discovered[2], discovered[0], discovered[2]};
    EXPECT_EQ(std::vector(set.begin(), set.end()), discovered);
    using Pair = std::pair<const CRLItem*, const CRLItem*>;
    const std::vector<Pair> pairs{{discovered[0], nullptr},
                                  {discovered[0], discovered[1]},
                                  {discovered[0], discovered[2]},
                                  {discovered[2], discovered[0]}};
    const CrlPairSet pair_set(pairs.rbegin(), pairs.rend());
    EXPECT_EQ(std::vector<Pair>(pair_set.begin(), pair_set.end()), pairs);
}

TEST(ItemCache, ADeltaCrlSetHoldsOneCrlForEachTimeNewestFirst) {
    CrlItemCache map;
    const auto enter = [&](const Bytes& time, int number) {
        return &cache_crl(map,
                          crl(CrlBuilder{.this_update = time,
                                         .extensions = {crl_number(integer(number))}}),
                          {})
                    .first;
    };
    const CRLItem* const first = enter(utc_time("260301000000Z"), 1);
    const CRLItem* const same_time = enter(generalized_time("20260301000000Z"), 2);
    const CRLItem* const newest = enter(generalized_time("20510101000000Z"), 3);
    const CRLItem* const oldest = enter(utc_time("510101000000Z"), 4);
    const DeltaCrlSet set{first, same_time, oldest, newest};
    EXPECT_EQ(std::vector(set.begin(), set.end()), (std::vector{newest, first, oldest}));
}

} // namespace
} // namespace norvane
