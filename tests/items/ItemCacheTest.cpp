#include "items/ItemCache.h"

#include "Material.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "support/AllocationCounter.h"

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
    for (const bool trusted : {false, true, false}) {
        CertificateCacheInfo info;
        info.trusted = trusted;
        const bool before = pair.second.trusted;
        cache_certificate(map, CertificateItem(pair.first), info);
        EXPECT_EQ(pair.second.trusted, before || trusted);
    }
    EXPECT_TRUE(pair.second.trusted);
}

TEST(ItemCache, IsOrderedByLengthAndThenByBytes) {
    ItemCache map;
    for (const Bytes& bytes : {Bytes{9, 9}, Bytes{1, 2, 4}, Bytes{1, 2, 3}, Bytes{0x80, 0}, Bytes{},
                               Bytes{0, 0, 0, 0}, Bytes{9, 9}}) {
        cache_certificate(map, view(bytes), {});
    }
    std::vector<Bytes> order;
    for (const auto& [item, info] : map)
        order.push_back(bytes_of(item.encoded()));
    EXPECT_EQ(order,
              (std::vector<Bytes>{{}, {9, 9}, {0x80, 0}, {1, 2, 3}, {1, 2, 4}, {0, 0, 0, 0}}));
}

TEST(ItemCache, SetsWalkInTheOrderOfDiscovery) {
    CrlItemCache map;
    std::vector<const CRLItem*> discovered;
    for (const Bytes& bytes : {Bytes{5, 5, 5}, Bytes{7}, Bytes{1}, Bytes{2, 2}, Bytes{0}}) {
        const CRLItem item(blob(bytes));
        discovered.push_back(&cache_crl(map, item, {}).first);
    }
    cache_crl(map, view({5, 5, 5}), {});
    CrlItemSet set;
    CrlPairSet pairs;
    for (const std::size_t i : {3U, 0U, 4U, 2U, 1U, 3U}) {
        set.insert(discovered[i]);
        pairs.insert({discovered[i], discovered[4 - i]});
        pairs.insert({discovered[i], nullptr});
    }
    EXPECT_EQ(std::vector(set.begin(), set.end()), discovered);
    std::vector<std::pair<const CRLItem*, const CRLItem*>> expected;
    for (std::size_t i = 0; i < discovered.size(); ++i) {
        expected.emplace_back(discovered[i], nullptr);
        expected.emplace_back(discovered[i], discovered[4 - i]);
    }
    EXPECT_TRUE(std::ranges::equal(pairs, expected));
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

TEST(ItemCache, AKnownCrlIsNotCopiedAndANewOneOnceOrMoved) {
    const Bytes list = large_crl(40'000, Key::ec(0));
    constexpr std::size_t overhead = 4096;
    CrlItemCache copied;
    CrlItemCache moved;
    CRLItem item(blob(list));
    const auto allocated = [&](CrlItemCache& map, auto&& given) {
        const AllocationCounter counter;
        cache_crl(map, std::forward<decltype(given)>(given), {});
        return counter.bytes();
    };
    EXPECT_LT(allocated(copied, item), list.size() + overhead);
    EXPECT_LT(allocated(copied, view(list)), overhead);
    EXPECT_LT(allocated(copied, item), overhead);
    EXPECT_LT(allocated(moved, std::move(item)), overhead);
    for (const CrlItemCache* map : {&copied, &moved})
        EXPECT_FALSE(map->begin()->first.is_decoded());
}

} // namespace
} // namespace norvane
