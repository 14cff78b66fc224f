// The time that retrievals of CRLs have, and what it is counted against.
#include "chain/CrlRetrieval.h"
#include "World.h"

#include <gtest/gtest.h>

namespace norvane::testing {
namespace {

struct Asked {
    std::string url;
    DWORD timeout = 0;

    bool operator==(const Asked&) const = default;
};

TEST(CrlRetrieval, HasTheTimeOutForEachUrlOrOnceInAll) {
    const std::vector<std::string> urls{"dead", "slow", "dead", "dead too", "last"};
    std::vector<DistributionPoint> points(urls.size());
    for (std::size_t i = 0; i < urls.size(); ++i)
        points[i].full_name = {url(urls[i])};
    const Bytes certificate = certify_subject(root, {crl_distribution_points(points)});
    constexpr std::uint32_t shared = chain_accumulative_timeout;
    const struct {
        std::uint32_t flags, timeout; // milliseconds
        std::vector<Asked> asked;
        std::uint32_t spent;
    } rows[] = {
        {0, 5000, {{"dead", 5000}, {"slow", 5000}, {"dead too", 5000}, {"last", 5000}}, 0},
        {0, 0, {{"dead", 0}, {"slow", 0}, {"dead too", 0}, {"last", 0}}, 0},
        // What is retrieved counts twice: 5000 - 2000 - 2 * 900 are left for the third.
        {shared, 5000, {{"dead", 5000}, {"slow", 3000}, {"dead too", 1200}}, 5000},
        {shared, 0, {}, 0},
    };
    for (const auto& row : rows) {
        World world;
        faked.served = {{"slow", {list(root)}}};
        faked.retrieval_takes = {{"dead", 2000}, {"slow", 900}, {"dead too", 2000}};
        world.chain.chain_flags |= row.flags;
        world.chain.retrieval_timeout = from_milliseconds(row.timeout);
        CrlItemSet brought;
        retrieve_crls(world.chain, *world.enter(certificate).first.crl_distribution_points(),
                      brought, 0);
        std::vector<Asked> asked;
        for (const Retrieval& retrieval : faked.retrievals)
            asked.push_back({retrieval.url, retrieval.timeout});
        EXPECT_EQ(asked, row.asked);
        EXPECT_EQ(brought.empty(), row.asked.empty());
        EXPECT_EQ(world.chain.timeout_spent, from_milliseconds(row.spent));
        EXPECT_EQ(world.chain.retrieved_urls.size(), 4U) << "those without time count as tried";
    }
}

} // namespace
} // namespace norvane::testing
