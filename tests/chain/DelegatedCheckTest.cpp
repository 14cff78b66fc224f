// Which members of a path the dispatcher is asked about, and with what.
#include "chain/DelegatedCheck.h"
#include "World.h"
#include "chain/PathValidation.h"

namespace norvane::testing {
namespace {

// A run with a path of three that nobody trusts.
struct PathOfThree : World {
    PathOfThree() {
        for (const Bytes& encoded : certificates)
            chain.path.items.emplace_back(enter(encoded));
    }
    Objects certificates{certify(root, root), certify(root, inter), certify_subject(inter)};
};

TEST(DelegatedCheck, AsksAboutAllMembersButAnchorsAndThoseFoundGood) {
    PathOfThree world;
    EXPECT_TRUE(validate_path(world.chain));
    ASSERT_EQ(faked.questions.size(), 3U);
    for (std::size_t place = 0; place < 3; ++place) {
        const Question& question = faked.questions[place];
        EXPECT_EQ(question.subject, world.certificates[place]);
        EXPECT_EQ(question.issuer, world.certificates[place == 0 ? 0 : place - 1]);
    }
    PathOfThree settled;
    settled.chain.path.items.front().info().trusted = true;
    std::next(settled.chain.path.items.begin())->info().revocation_good = true;
    EXPECT_TRUE(validate_path(settled.chain));
    EXPECT_EQ(faked.questions.size(), 1U) << "the last alone";
}

TEST(DelegatedCheck, SharesTheTimeThatIsLeftOnlyInAccumulativeMode) {
    constexpr std::uint32_t shared = chain_accumulative_timeout;
    const struct {
        std::uint32_t flags, timeout, spent; // milliseconds
        DWORD asked_flags, asked_timeout;
        std::uint32_t spent_then;
    } rows[] = {
        {0, 5000, 0, 0, 5000, 0},
        {chain_cache_only, 5000, 0, 2, 5000, 0},
        {shared, 5000, 1000, 4, 4000, 1300},
        {shared, 5000, 5000, 6, 0, 5300},
    };
    for (const auto& row : rows) {
        PathOfThree world;
        faked.question_takes = 300;
        world.chain.chain_flags |= row.flags;
        world.chain.retrieval_timeout = from_milliseconds(row.timeout);
        world.chain.timeout_spent = from_milliseconds(row.spent);
        const Chain::Position element = world.chain.path.items.begin();
        EXPECT_TRUE(delegated_revocation_check(world.chain, element, element));
        const Question& question = faked.questions.at(0);
        EXPECT_EQ(std::pair(question.flags, question.timeout),
                  std::pair(row.asked_flags, row.asked_timeout));
        EXPECT_EQ(world.chain.timeout_spent, from_milliseconds(row.spent_then));
    }
}

} // namespace
} // namespace norvane::testing
