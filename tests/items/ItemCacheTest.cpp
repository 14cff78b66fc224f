#include "items/ItemCache.h"

#include "Material.h"

#include <gtest/gtest.h>

#include "support/AllocationCounter.h"
#include "values/ErrorOf.h"

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
    const ByteView encoding{item.encoded().data, item.encoded().length};
    EXPECT_EQ(&cache_certificate(certificates, encoding, {}), &pair);
    EXPECT_EQ(&cache_certificate(certificates, CertificateItem(item), {}), &pair);
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

    EXPECT_EQ(error_of([&] { return cache_crl(crls, CRLItem(), {}).first.discovery(); }).message,
              "No source for fill_encoded");
    EXPECT_EQ(crls.size(), 1U);
    EXPECT_EQ(certificates.size(), 1U);
}

TEST(ItemCache, TrustIsGainedAndNeverLost) {
    for (const bool first : {false, true}) {
        for (const bool second : {false, true}) {
            ItemCache map;
            CertificateCacheInfo info;
            info.trusted = first;
            auto& pair = cache_certificate(map, certificate({}), info);
            EXPECT_EQ(pair.second.trusted, first);
            info.trusted = second;
            cache_certificate(map, CertificateItem(pair.first), info);
            EXPECT_EQ(pair.second.trusted, first || second);
        }
    }
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
        cache_crl(map, view({7}), {}); // One that is known changes nothing.
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
    ASSERT_EQ(pairs.size(), 2 * discovered.size());
    std::size_t place = 0;
    for (const auto& [base, delta] : pairs) {
        EXPECT_EQ(base, discovered[place / 2]);
        EXPECT_EQ(delta, place % 2 == 0 ? nullptr : discovered[4 - place / 2]);
        ++place;
    }
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
    EXPECT_EQ(map.size(), 4U);
    const DeltaCrlSet set{first, same_time, oldest, newest};
    EXPECT_EQ(std::vector(set.begin(), set.end()), (std::vector{newest, first, oldest}));
}

TEST(ItemCache, AKnownCrlIsNotCopiedAndANewOneOnceOrMoved) {
    const Bytes list = large_crl(40'000, Key::ec(0));
    ASSERT_GT(list.size(), 1'900'000U);
    constexpr std::size_t overhead = 4096;
    const auto allocated = [](auto enter) {
        const AllocationCounter counter;
        enter();
        return counter.bytes();
    };
    CrlItemCache from_bytes;
    CrlItemCache from_item;
    CrlItemCache from_rvalue;
    const CRLItem item(blob(list));
    CRLItem given(blob(list));
    const std::size_t of_bytes = allocated([&] { cache_crl(from_bytes, view(list), {}); });
    const std::size_t of_item = allocated([&] { cache_crl(from_item, item, {}); });
    const auto* const bytes = given.encoded().data;
    EXPECT_LT(allocated([&] { cache_crl(from_rvalue, std::move(given), {}); }), overhead);
    EXPECT_EQ(from_rvalue.begin()->first.encoded().data, bytes);
    for (const std::size_t copied : {of_bytes, of_item}) {
        EXPECT_GE(copied, list.size());
        EXPECT_LT(copied, list.size() + overhead);
    }
    EXPECT_LT(allocated([&] {
                  cache_crl(from_bytes, view(list), {});
                  cache_crl(from_bytes, item, {});
                  cache_crl(from_item, view(list), {});
              }),
              overhead);
    for (const CrlItemCache* map : {&from_bytes, &from_item, &from_rvalue})
        EXPECT_FALSE(map->begin()->first.is_decoded());
    EXPECT_FALSE(item.is_decoded());
}

} // namespace
} // namespace norvane
