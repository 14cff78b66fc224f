// What children of fork can do that were made while other threads asked.
#include "Dispatch.h"

#include <atomic>
#include <cstring>
#include <future>
#include <thread>

namespace {

using namespace norvane::testing;

constexpr Outcome good{TRUE, 0, ERROR_SUCCESS};

// A CA in the store "Root" and one of its certificates, which is good.
struct SmallWorld {
    Bytes root = CertificateBuilder{.issuer = common_name("R"),
                                    .subject = common_name("R"),
                                    .spki = Key::ec(0).spki(),
                                    .extensions = {basic_constraints(Holder::ca)}}
                     .sign(Key::ec(0));
    Bytes leaf = CertificateBuilder{.issuer = common_name("R")}.sign(Key::ec(0));
    Bytes crl =
        CrlBuilder{.issuer = common_name("R"), .entries = {{.serial = {0x55}}}}.sign(Key::ec(0));

    // Runs `checks` where our own module answers and trusts the CA.
    [[nodiscard]] auto with_root(const std::function<void()>& checks) const {
        const TemporaryFolder folder;
        const auto file = folder.write("root", std::string(root.begin(), root.end()));
        return with_modules(OWN_MODULE, checks, "[stores]\nCA =\nRoot = " + file.string() + "\n");
    }
};

// What a thread of an application does, with its own stores and those that it shares with others.
struct Application {
    const SmallWorld& world;
    OpenStore crls = OpenStore::memory();
    std::atomic<std::uint32_t> number = 0;

    explicit Application(const SmallWorld& small) : world(small) { crls.add_crl(world.crl); }

    [[nodiscard]] bool one_turn() {
        CERT_REVOCATION_PARA para{};
        para.cbSize = sizeof para;
        para.hCrlStore = crls.get();
        Outcome outcome = ask({certificate_context(world.leaf).get()}, 0, &para);
        outcome.freshness = 0;
        // Bytes that nobody else has: another signature.
        const OpenStore own = OpenStore::memory();
        Bytes other = world.leaf;
        const std::uint32_t turn = ++number;
        std::memcpy(&other.back() - sizeof turn, &turn, sizeof turn);
        const bool added = own.add(other) != FALSE;
        HKEY key = nullptr;
        static_cast<void>(RegOpenKeyExW(HKEY_LOCAL_MACHINE, nullptr, 0, KEY_READ, &key));
        return outcome == good && added && RegCloseKey(key) == ERROR_SUCCESS;
    }
};

// Whether a child does its turn. One that hangs is ended by its alarm.
[[nodiscard]] bool child_does_its_turn(Application& application) {
    constexpr unsigned hang_seconds = 60;
    const pid_t child = fork();
    if (child == 0) {
        alarm(hang_seconds);
        _exit(application.one_turn() ? 0 : 1);
    }
    int status = -1;
    return waitpid(child, &status, 0) == child && status == 0;
}

// The allocator of the address sanitizer takes none of its own locks over a fork.
class Fork : public ::testing::Test {
  protected:
    void SetUp() override {
#ifdef __SANITIZE_ADDRESS__
        GTEST_SKIP() << "with the address sanitizer any child may hang in its allocator";
#endif
    }
};

} // namespace

TEST_F(Fork, LeavesNoLockBehindInTheChild) {
    const SmallWorld world;
    EXPECT_TRUE(world.with_root([&] {
        Application application(world);
        std::atomic<bool> over = false;
        std::vector<std::jthread> busy(3);
        for (std::jthread& thread : busy) {
            thread = std::jthread([&] {
                while (!over) {
                    EXPECT_TRUE(application.one_turn());
                }
            });
        }
        for (int count = 0; count < 100; ++count) {
            EXPECT_TRUE(child_does_its_turn(application)) << count;
        }
        over = true;
    }));
}

TEST_F(Fork, LeavesNothingHalfMadeInTheChild) {
    const SmallWorld world;
    for (int delay_us = 0; delay_us < 3000; delay_us += 100) {
        // Each in a process in which nothing has been asked yet.
        EXPECT_TRUE(world.with_root([&] {
            Application application(world);
            // Detached, since the thread sanitizer takes one that could be joined for lost in the
            // child.
            std::packaged_task<bool()> first([&] { return application.one_turn(); });
            std::future<bool> first_is_done = first.get_future();
            std::thread(std::move(first)).detach();
            usleep(static_cast<useconds_t>(delay_us));
            EXPECT_TRUE(child_does_its_turn(application));
            EXPECT_TRUE(first_is_done.get());
        })) << delay_us;
    }
}
