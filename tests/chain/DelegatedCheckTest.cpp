// Which members of a path the dispatcher is asked about, and with what.
#include "chain/DelegatedCheck.h"
#include "World.h"
#include "chain/PathValidation.h"
#include "chain/TrustStatus.h"
#include "values/Exceptions.h"

namespace norvane::testing {
namespace {

// A run with a path of three that nobody trusts.
struct PathOfThree : World {
    PathOfThree() {
        for (const Bytes& encoded : certificates)
            chain.path.items.emplace_back(enter(encoded));
    }
    Chain::Position element(int place) { return std::next(chain.path.items.begin(), place); }
    bool check(int place) {
        return delegated_revocation_check(chain, element(place),
                                          element(place == 0 ? 0 : place - 1));
    }

    Objects certificates{certify(root, root), certify(root, inter), certify_subject(inter)};
};

TEST(DelegatedCheck, AsksAboutTheMembersThatTheModeWants) {
    const struct {
        std::uint32_t mode;
        std::vector<std::size_t> asked;
    } rows[] = {{0x20000000, {0, 1, 2}},
                {0x40000000, {1, 2}},
                {0x10000000, {2}},
                {0x30000000, {2}},
                {0, {}}};
    for (const auto& row : rows) {
        PathOfThree world;
        world.chain.chain_flags = row.mode;
        EXPECT_TRUE(validate_path(world.chain));
        ASSERT_EQ(faked.questions.size(), row.asked.size()) << row.mode;
        for (std::size_t i = 0; i < row.asked.size(); ++i) {
            const std::size_t place = row.asked[i];
            EXPECT_EQ(faked.questions[i].subject, world.certificates[place]);
            EXPECT_EQ(faked.questions[i].issuer, world.certificates[place == 0 ? 0 : place - 1]);
        }
    }
    PathOfThree settled;
    settled.element(0)->info().trusted = true;
    settled.element(1)->info().revocation_good = true;
    EXPECT_TRUE(validate_path(settled.chain));
    EXPECT_EQ(faked.questions.size(), 1U) << "the last alone";

    PathOfThree circle; // the run's own subject, of whatever mode and however good
    circle.chain.chain_flags = 0;
    circle.element(1)->info().revocation_good = true;
    circle.chain.revocation_in_progress.insert(&circle.element(1)->item());
    EXPECT_FALSE(circle.check(1));
    EXPECT_TRUE(faked.questions.empty());
    EXPECT_EQ(circle.chain.best_path->path_status, REVOCATION_STATUS_UNKNOWN);
}

TEST(DelegatedCheck, FoldsTheAnswersIntoRecords) {
    constexpr auto revoked_error = static_cast<DWORD>(CRYPT_E_REVOKED);
    const struct {
        Answer answer;
        std::uint32_t status = 0, reason = 0;
    } rows[] = {
        {},
        {{static_cast<DWORD>(CRYPT_E_REVOCATION_OFFLINE), 1}, REVOCATION_STATUS_UNKNOWN},
        {{revoked_error, 1}, IS_REVOKED, 1},
        {{revoked_error, 6}, IS_REVOKED, 6},
        {{revoked_error, 7}, IS_REVOKED, 0},
        {{revoked_error, 8}, IS_REVOKED, 0},
    };
    for (const auto& row : rows) {
        PathOfThree world;
        faked.answers = {{world.certificates[1], row.answer}};
        EXPECT_EQ(world.check(1), row.status == 0) << row.answer.reason;
        const Chain record = world.chain.best_path.value_or(world.chain.path);
        EXPECT_EQ(std::next(record.items.begin())->status, row.status);
        EXPECT_EQ(record.path_reason, row.reason);
    }
}

TEST(DelegatedCheck, HandsOverAllThatTheRunHasToSearch) {
    PathOfThree world;
    ChainValidator& chain = world.chain;
    const OpenStore later = OpenStore::memory();
    const OpenStore later_crls = OpenStore::memory();
    chain.cert_stores.emplace(later.get());
    chain.crl_stores.emplace(later_crls.get());
    const Bytes extra = certify(other, other);
    const Bytes extra_crl = list(other);
    const Bytes crl = list(root);
    const Bytes later_crl = list(inter);
    chain.extra_certificates.insert(&world.enter(extra));
    chain.extra_crls.insert(&world.enter_crl(extra_crl));
    world.certs.add(world.certificates[0]);
    later.add(world.certificates[1]);
    world.crls.add_crl(crl);
    later_crls.add_crl(later_crl);
    set_time(chain.verify_time, {2048, 2, 0, 29, 23, 59, 58, 777});

    ASSERT_TRUE(world.check(2));
    const Question& question = faked.questions.at(0);
    EXPECT_EQ(question.cert_stores,
              (std::vector<Objects>{{extra}, {world.certificates[1]}, {world.certificates[0]}}));
    EXPECT_EQ(question.crls, (Objects{extra_crl, later_crl, crl}));
    const SYSTEMTIME& time = question.time;
    EXPECT_EQ(std::tuple(time.wYear, time.wMonth, time.wDay, time.wSecond, time.wMilliseconds),
              std::tuple(2048, 2, 29, 58, 0));
}

TEST(DelegatedCheck, SharesTheTimeThatIsLeftOnlyInAccumulativeMode) {
    constexpr std::uint32_t shared = chain_accumulative_timeout;
    const struct {
        std::uint32_t flags, timeout, spent; // milliseconds
        DWORD asked_flags, asked_timeout;
        std::uint32_t spent_then;
    } rows[] = {
        {0, 5000, 0, 0, 5000, 0},
        {0, 0, 0, 0, 0, 0},
        {chain_cache_only, 5000, 0, 2, 5000, 0},
        {shared, 5000, 1000, 4, 4000, 1300},
        {shared | chain_cache_only, 5000, 1000, 6, 4000, 1300},
        {shared, 5000, 5000, 6, 0, 5300},
        {shared, 0, 0, 6, 0, 300},
    };
    for (const auto& row : rows) {
        PathOfThree world;
        faked.clock = 0;
        faked.question_takes = 300;
        world.chain.chain_flags |= row.flags;
        world.chain.retrieval_timeout = from_milliseconds(row.timeout);
        world.chain.timeout_spent = from_milliseconds(row.spent);
        EXPECT_TRUE(world.check(1));
        const Question& question = faked.questions.at(0);
        EXPECT_EQ(std::pair(question.flags, question.timeout),
                  std::pair(row.asked_flags, row.asked_timeout));
        EXPECT_EQ(world.chain.timeout_spent, from_milliseconds(row.spent_then));
    }
    PathOfThree world;
    faked.clock = 0;
    faked.question_takes = -1;
    EXPECT_TRUE(world.check(1)) << "nobody looks at the clock";
    world.chain.chain_flags |= shared;
    EXPECT_THROW(static_cast<void>(world.check(1)), CAException);
}

} // namespace
} // namespace norvane::testing
