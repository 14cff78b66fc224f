// Faults that are made on purpose: each test says how many it made, and finds that no response was
// lost or wrongly served.
#include "retrieval/Retrieval.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <dlfcn.h>
#include <fcntl.h>
#include <iostream>
#include <iterator>
#include <random>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>

static std::atomic<bool> reads_fail = false;

// Stands before the C library's, for this program and the libraries that it loads.
extern "C" __attribute__((visibility("default"))) ssize_t read(int file, void* to, size_t size) {
    static const auto original = reinterpret_cast<decltype(&read)>(dlsym(RTLD_NEXT, "read"));
    if (reads_fail) {
        errno = EIO;
        return -1;
    }
    return original(file, to, size);
}

namespace norvane::testing {
namespace {

namespace fs = std::filesystem;

constexpr const char* with_files = "schemes = file\n";

std::vector<fs::path> files_with(const fs::path& folder, std::string_view ending) {
    std::vector<fs::path> found;
    for (const auto& item : fs::directory_iterator(folder))
        if (item.path().native().ends_with(ending))
            found.push_back(item.path());
    return found;
}

// Only children retrieve from the source, so that this process stays one without other threads.
pid_t start(const std::function<bool()>& work) {
    const pid_t child = fork();
    if (child == 0)
        _exit(work() ? 0 : 1);
    return child;
}
bool succeeds(const std::function<bool()>& work) {
    int status = -1;
    const pid_t child = start(work);
    return waitpid(child, &status, 0) == child && status == 0;
}

TEST(CacheFaults, NoResponseIsLostOrTornWhenWritersAreKilled) {
    const TemporaryFolder folder;
    const fs::path cache = folder.path() / "cache";
    const auto checks = [&] {
        constexpr int kills = 200;
        // Of one date, so that each takes the place of the other; large enough to be met half
        // written.
        const std::array<Bytes, 2> versions = {large_crl(40'000, Key::ec(0)),
                                               large_crl(39'000, Key::ec(0))};
        const fs::path source = folder.path() / "source";
        const std::string url = "file://" + source.string();
        for (std::size_t version = 0; version < versions.size(); ++version)
            static_cast<void>(folder.write(std::to_string(version), text_of(versions[version])));
        const auto write_cache = [&](int rounds) {
            const fs::path link = folder.path() / "link";
            fs::remove(link);
            for (int i = 0; i < rounds; ++i) {
                fs::create_symlink(std::to_string(i % 2), link);
                fs::rename(link, source);
                if (retrieve(url).error != 0)
                    return false;
            }
            return true;
        };
        ASSERT_TRUE(succeeds([&] { return write_cache(1); }));

        std::mt19937 random(1);
        std::size_t reads = 0;
        std::size_t wrong = 0;
        int killed = 0;
        const auto read_cache = [&] {
            ++reads;
            const Retrieved got = retrieve(url, cached_objects);
            wrong += got != objects({versions[0]}) && got != objects({versions[1]});
        };
        for (int i = 0; i < kills; ++i) {
            const pid_t writer = start([&] { return write_cache(1'000'000); });
            // At any time, or as soon as a file of this writer is seen that is not whole.
            const std::size_t before = files_with(cache, ".new").size();
            const bool any_time = i % 2 == 0;
            const auto end =
                Clock::now() + std::chrono::microseconds(any_time ? random() % 30'000 : 5'000'000);
            while (Clock::now() < end && (any_time || files_with(cache, ".new").size() == before))
                read_cache();
            kill(writer, SIGKILL);
            int status = 0;
            killed += waitpid(writer, &status, 0) == writer && WIFSIGNALED(status);
            read_cache();
        }
        const auto abandoned = files_with(cache, ".new");
        std::cout << killed << " writers killed, " << abandoned.size()
                  << " of them in the middle of a file; " << reads << " reads, " << wrong
                  << " wrong or without the response\n";
        EXPECT_EQ(killed, kills);
        EXPECT_GT(abandoned.size(), kills / 10);
        EXPECT_EQ(wrong, 0);
    };
    EXPECT_TRUE(passes_with_cache(checks, with_files, folder));
}

TEST(CacheFaults, NoResponseIsLostOrTornWhenTheDiskIsFull) {
    const TemporaryFolder folder;
    const fs::path cache = folder.path() / "cache";
    fs::create_directory(cache);
    const auto mount_small = [&] {
        return unshare(CLONE_NEWNS) == 0 &&
               mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
               mount("none", cache.c_str(), "tmpfs", 0, "size=512k,mode=0700") == 0;
    };
    if (!succeeds(mount_small))
        GTEST_SKIP() << "mounting a file system is not permitted here";

    const auto checks = [&] {
        ASSERT_TRUE(mount_small());
        const auto retrieve_from = [&](const std::string& name, const Bytes& crl) {
            const std::string url = "file://" + folder.write(name, text_of(crl)).string();
            EXPECT_EQ(retrieve(url), objects({crl}));
            return retrieve(url, cached_objects);
        };
        const Bytes other = crl_of(260101, "Other");
        ASSERT_EQ(retrieve_from("other", other), objects({other}));
        Bytes kept = large_crl(500, Key::ec(0));
        ASSERT_EQ(retrieve_from("source", kept), objects({kept}));
        int faults = 0;
        int tried = 0;
        int wrong = 0;
        // Foreign files leave less and less for a response of some 64 KB.
        for (std::uint32_t room = 204; room != 0; ++tried) {
            room -= 4;
            const Bytes next = large_crl(1300 + room, Key::ec(0));
            static_cast<void>(folder.write("cache/filler", ""));
            const auto free_bytes = fs::space(cache).available;
            const std::uintmax_t left = std::uintmax_t{room} * 1024;
            std::ofstream(cache / "filler")
                << std::string(free_bytes > left ? free_bytes - left : 0, 'x');
            const Retrieved served = retrieve_from("source", next);
            faults += served == objects({kept});
            wrong += served != objects({kept}) && served != objects({next});
            kept = served.objects.empty() ? kept : served.objects[0];
            wrong += retrieve("file://" + (folder.path() / "other").string(), cached_objects) !=
                     objects({other});
        }
        std::cout << tried << " responses, " << faults
                  << " of them without room on the disk; the response before was lost or wrong "
                  << wrong << " times\n";
        EXPECT_GT(faults, 10);
        EXPECT_LT(faults, tried - 10);
        EXPECT_EQ(wrong, 0);
        EXPECT_TRUE(files_with(cache, ".new").empty());
    };
    EXPECT_TRUE(passes_with_cache(checks, with_files, folder));
}

TEST(CacheFaults, NoFileWithAFaultIsServed) {
    const TemporaryFolder folder;
    const auto checks = [&] {
        const Bytes crl = crl_of(260101);
        const std::string url = "file://" + folder.write("source", text_of(crl)).string();
        ASSERT_EQ(retrieve(url), objects({crl}));
        const fs::path file = files_with(folder.path() / "cache", ".response").at(0);
        std::ifstream stream(file, std::ios::binary);
        const std::string whole(std::istreambuf_iterator<char>(stream), {});
        const auto now = fs::file_time_type::clock::now();
        std::size_t tried = 0;
        std::size_t wrong = 0;
        const auto serve = [&](const std::string& content) {
            fs::remove(file); // since cutting a file down waits for the disk
            static_cast<void>(folder.write(file, content));
            // The clock of the files moves in steps that are longer than one of these.
            fs::last_write_time(file, now - std::chrono::seconds{++tried});
            return retrieve(url, cached_objects);
        };
        for (std::size_t bit = 0; bit < whole.size() * 8; ++bit) {
            std::string flipped = whole;
            flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << bit % 8));
            wrong += serve(flipped) != failure(CRYPT_E_NOT_FOUND);
        }
        for (std::size_t length = 0; length < whole.size(); ++length)
            wrong += serve(whole.substr(0, length)) != failure(CRYPT_E_NOT_FOUND);
        wrong += serve(whole + '\0') != failure(CRYPT_E_NOT_FOUND);
        std::cout << tried << " files with a bit flipped, cut or too long; " << wrong
                  << " of them served\n";
        EXPECT_EQ(tried, 9 * whole.size() + 1);
        EXPECT_EQ(wrong, 0);
        EXPECT_EQ(retrieve(url), objects({crl}));
        EXPECT_EQ(retrieve(url, cached_objects), objects({crl})) << "it was made good";
        EXPECT_EQ(serve(whole), objects({crl}));
    };
    EXPECT_TRUE(passes_with_cache(checks, with_files, folder));
}

TEST(ProcessFaults, AreToldAsSuchAndNotRemembered) {
    const TemporaryFolder folder;
    const auto checks = [&] {
        HttpServer server;
        const Bytes crl = crl_of(260101);
        const std::string file = "file://" + folder.write("source", text_of(crl)).string();
        server.on("/", reply_of(crl));
        ASSERT_EQ(retrieve(file), objects({crl}));
        // Another file of the same content, which this process has not read yet.
        const fs::path kept = files_with(folder.path() / "cache", ".response").at(0);
        fs::last_write_time(kept, fs::last_write_time(kept) - std::chrono::seconds{1});

#ifndef __SANITIZE_ADDRESS__ // Sanitizers want descriptors of their own to look at memory.
        std::vector<int> taken;
        const auto take_all_descriptors = [&] {
            constexpr rlim_t few = 64;
            rlimit limit{};
            ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
            limit.rlim_cur = few;
            ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
            for (int next = 0; (next = open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0;)
                taken.push_back(next);
        };
        const auto give_descriptors_back = [&] {
            for (const int descriptor : taken)
                close(descriptor);
            taken.clear();
        };
        take_all_descriptors();
        const Retrieved full = failure(ERROR_TOO_MANY_OPEN_FILES);
        const std::string http = server.url("/");
        EXPECT_EQ(retrieve(http), full) << "while what speaks to servers is not loaded";
        EXPECT_EQ(retrieve(file), full);
        EXPECT_EQ(retrieve(file, cached_objects), full);
        give_descriptors_back();
        EXPECT_EQ(retrieve(http), objects({crl}));
        take_all_descriptors();
        for (const char* scheme : {"http", "ldap"})
            for (const std::string host : {"127.0.0.1", "localhost"})
                EXPECT_EQ(retrieve(scheme + ("://" + host) + ":1/o=x"), full) << scheme << host;
        give_descriptors_back();
#endif

        reads_fail = true;
        EXPECT_EQ(retrieve(file), failure(ERROR_READ_FAULT));
        EXPECT_EQ(retrieve(file, cached_objects), failure(ERROR_READ_FAULT));
        reads_fail = false;
        EXPECT_EQ(retrieve(file, cached_objects), objects({crl}));
    };
    EXPECT_TRUE(
        passes_with_cache(checks, "schemes = file http ldap\nfailure_memory = 1000s\n", folder));
}

} // namespace
} // namespace norvane::testing
