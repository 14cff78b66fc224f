#include "Dispatch.h"

#include <fstream>
#include <sstream>
#include <thread>

namespace {

using namespace norvane::testing;

constexpr Outcome good{TRUE, 0, ERROR_SUCCESS};
constexpr Outcome no_module{FALSE, 0, CRYPT_E_NO_REVOCATION_DLL};

} // namespace

TEST(RevocationModules, WithoutAnyThereIsAnErrorOfItsOwn) {
    for (const char* modules : {"", "/nonexistent.so", PLATFORM_LIBRARY}) {
        EXPECT_TRUE(with_modules(modules, [] { EXPECT_EQ(ask({numbered(1)}), no_module); }));
    }
}

TEST(RevocationModules, AreLoadedOnceForAllThreads) {
    EXPECT_TRUE(with_modules(both_modules + ":/nonexistent.so:" MODULE_A, [] {
        std::vector<DWORD> reasons;
        std::atomic<int> asked = 0;
        script_of(MODULE_A).entry = [&](DWORD reason) {
            reasons.push_back(reason);
            EXPECT_EQ(ask({numbered(1)}), no_module); // while it is being loaded
            return TRUE;
        };
        script_of(MODULE_A).check = answering(CRYPT_E_NO_REVOCATION_CHECK);
        script_of(MODULE_B).check = [&](const Question& question) {
            ++asked;
            return answering(ERROR_SUCCESS)(question);
        };
        numbered(1);
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < 4; ++thread) {
            threads.emplace_back([] {
                for (int call = 0; call < 100; ++call) {
                    EXPECT_EQ(ask({numbered(1)}), good);
                }
            });
        }
        threads.clear();
        EXPECT_EQ(reasons, (std::vector<DWORD>{DLL_PROCESS_ATTACH}));
        EXPECT_EQ(asked, 400);
    }));
}

TEST(RevocationModules, OneThatRefusesIsDetachedAndNotAsked) {
    EXPECT_TRUE(with_modules(both_modules, [] {
        std::vector<DWORD> reasons;
        script_of(MODULE_A).entry = [&](DWORD reason) {
            reasons.push_back(reason);
            return FALSE;
        };
        script_of(MODULE_A).check = [](const Question& question) {
            ADD_FAILURE();
            return answering(ERROR_SUCCESS)(question);
        };
        script_of(MODULE_B).check = answering(ERROR_SUCCESS);
        EXPECT_EQ(ask({numbered(1)}), good);
        EXPECT_EQ(reasons, (std::vector<DWORD>{DLL_PROCESS_ATTACH, DLL_PROCESS_DETACH}));
    }));
}

TEST(RevocationModules, AreDetachedInReverseOrderWhenTheProcessExits) {
    const TemporaryFolder folder;
    const auto log = folder.path() / "log";
    EXPECT_TRUE(with_modules(both_modules, [&] {
        const auto logging = [&](const std::string& name) {
            return [=, &log](DWORD reason) {
                std::ofstream(log, std::ios::app) << name << reason << ' ';
                if (reason == DLL_PROCESS_DETACH) {
                    EXPECT_EQ(ask({numbered(1)}), no_module);
                }
                return TRUE;
            };
        };
        script_of(MODULE_A) = {answering(ERROR_SUCCESS), logging("A")};
        script_of(MODULE_B) = {answering(ERROR_SUCCESS), logging("B")};
        EXPECT_EQ(ask({numbered(1)}), good);
        std::exit(::testing::Test::HasFailure() ? 1 : 0);
    }));
    std::stringstream text;
    text << std::ifstream(log).rdbuf();
    EXPECT_EQ(text.str(), "A1 B1 B0 A0 ");
}
