// What the questions of a thread share: quotas, failures, and what they leave behind.
#include "call/Question.h"
#include "support/ConfiguredProcess.h"

#include <array>
#include <thread>

namespace norvane {
namespace {

constexpr std::array<std::uint8_t, 2> one{1, 1}, one_again{1, 1}, two{2, 2};
constexpr ByteView view(const std::array<std::uint8_t, 2>& bytes) { return {bytes.data(), 2}; }

TEST(Question, RunsInACircleOnItsThreadAlone) {
    const Question outer(view(one));
    const Question other(view(two));
    EXPECT_FALSE(other.runs_in_a_circle());
    EXPECT_TRUE(Question(view(one_again)).runs_in_a_circle());
    std::jthread([] { EXPECT_FALSE(Question(view(one)).runs_in_a_circle()); }).join();
}

TEST(Question, EndsWithAllOutsideItWhenAQuotaIsSpent) {
    const auto spend = [](Resource resource, std::uint64_t amount) {
        for (int repeat = 0; repeat < 2; ++repeat) {
            {
                Question outer(view(one));
                outer.open();
                charge(resource, amount / 2);
                {
                    Question inner(view(two));
                    inner.open();
                    charge(resource, amount - amount / 2);
                    EXPECT_THROW(charge(resource), QuotaSpent);
                    inner.note_failure(ERROR_NOT_ENOUGH_QUOTA);
                    EXPECT_THROW(Question(view(two)).open(), PlatformFailure);
                }
                EXPECT_THROW(require_health(), PlatformFailure);
                EXPECT_EQ(NorvaneTakeProcessFailure(), ERROR_SUCCESS) << "before its end";
            }
            EXPECT_EQ(NorvaneTakeProcessFailure(), ERROR_NOT_ENOUGH_QUOTA);
        }
        charge(resource, amount + 1); // outside of any question
    };
    EXPECT_TRUE(testing::passes_when_configured(
        "[limits]\nsignature_verifications = 5\nhashed_bytes = 6G\nshown_objects = 7\n"
        "retrieval_time = 8s\n",
        [&] {
            spend(Resource::verifications, 5);
            spend(Resource::hashed_bytes, std::uint64_t{6} << 30);
            spend(Resource::shown_objects, 7);
            spend(Resource::retrieval_time, 8'000);
            spend(Resource::retrievals, 64); // which has its default
        }));
}

TEST(Question, ReleasesWhatWasLeftBehindWhenTheOutermostEnds) {
    const auto new_store = [] {
        return CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, CERT_STORE_CREATE_NEW_FLAG, nullptr);
    };
    const auto is_open = [](HCERTSTORE store) {
        return CertDuplicateStore(store) != nullptr && CertCloseStore(store, 0);
    };
    const HCERTSTORE left = new_store();
    const HCERTSTORE left_by_nobody = new_store();
    {
        const Question outer(view(one));
        {
            const Question inner(view(two));
            leave_behind(left);
        }
        EXPECT_TRUE(is_open(left));
    }
    EXPECT_FALSE(is_open(left));
    leave_behind(left_by_nobody);
    EXPECT_FALSE(is_open(left_by_nobody));
}

} // namespace
} // namespace norvane
