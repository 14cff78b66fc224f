// What the cache keeps, what it serves, and what it leaves alone.
#include "retrieval/Retrieval.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <sys/stat.h>

namespace norvane::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

std::vector<fs::path> files_of(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const auto& item : fs::directory_iterator(folder))
        files.push_back(item.path());
    std::ranges::sort(files);
    return files;
}

enum class Times { of_use, of_change };
void make_older(const fs::path& file, Times which, std::chrono::seconds age) {
    std::array<timespec, 2> times{};
    times[0].tv_nsec = times[1].tv_nsec = UTIME_OMIT;
    times[which == Times::of_use ? 0 : 1] = {.tv_sec = std::time(nullptr) - age.count(),
                                             .tv_nsec = 0};
    ASSERT_EQ(utimensat(AT_FDCWD, file.c_str(), times.data(), 0), 0);
}

TEST(RetrievalCache, TheServerIsAskedWhetherItsResponseHasChanged) {
    const TemporaryFolder folder;
    const auto checks = [&] {
        HttpServer server;
        const Bytes first = crl_of_day(1);
        const Bytes second = crl_of_day(2);
        const std::string body = text_of(first);
        const auto inodes = [&] {
            std::vector<ino_t> found;
            for (const fs::path& file : files_of(folder.path() / "cache")) {
                struct stat status {};
                EXPECT_EQ(stat(file.c_str(), &status), 0);
                found.push_back(status.st_ino);
            }
            return found;
        };
        const auto header = [&](const std::string& path, const std::string& name) {
            const auto headers = server.requests(path).back().headers;
            const auto found = headers.find(name);
            return found == headers.end() ? "" : found->second;
        };

        const std::string date = "Fri, 02 Jan 2026 00:00:00 GMT";
        server.on_with_etag("/etag", body, "\"1\"");
        server.on("/date", http_reply(body, "200 OK", {"Last-modified:" + date}));
        server.on("/none", http_reply(body));
        for (const char* path : {"/etag", "/date", "/none"}) {
            EXPECT_EQ(retrieve(server.url(path)), objects({first})) << path;
            EXPECT_EQ(header(path, "if-none-match") + header(path, "if-modified-since"), "");
        }
        const auto before = inodes();
        server.on("/date", http_reply("", "304 Not Modified"));
        for (const char* path : {"/etag", "/date", "/none"})
            EXPECT_EQ(retrieve(server.url(path)), objects({first})) << path;
        EXPECT_EQ(header("/etag", "if-none-match"), "\"1\"");
        EXPECT_EQ(header("/date", "if-modified-since"), date);
        EXPECT_EQ(inodes(), before) << "what has not changed is not written again";
        server.on_with_etag("/etag", text_of(second), "\"2\"");
        EXPECT_EQ(retrieve(server.url("/etag")), objects({second}));

        // The tag of one resource says nothing about another one, to which a redirection leads now.
        server.on("/there", http_redirect("/etag"));
        EXPECT_EQ(retrieve(server.url("/there")), objects({second}));
        server.on_with_etag("/elsewhere", text_of(crl_of_day(3)), "\"2\"");
        server.on("/there", http_redirect("/elsewhere"));
        EXPECT_EQ(retrieve(server.url("/there")), objects({crl_of_day(3)}));

        // Nothing that an earlier response or the user's home holds identifies the caller.
        static_cast<void>(std::ofstream(fs::path(getenv("HOME")) / ".netrc")
                          << "machine 127.0.0.1 login a password b\n");
        server.on("/cookie", http_reply(body, "200 OK", {"Set-Cookie: a=b"}));
        EXPECT_EQ(retrieve(server.url("/cookie")), objects({first}));
        server.on("/cookie", http_reply(body, "401 Unauthorized", {"WWW-Authenticate: Basic"}));
        EXPECT_EQ(retrieve(server.url("/cookie")), failure(HTTP_E_STATUS_FIRST + 401));
        EXPECT_EQ(header("/cookie", "cookie") + header("/cookie", "authorization") +
                      header("/cookie", "accept-encoding"),
                  "");

        const std::size_t connections = server.connections();
        for (const char* path : {"/etag", "/date", "/none", "/there", "/absent"})
            static_cast<void>(retrieve(server.url(path), cached_objects));
        EXPECT_EQ(server.connections(), connections) << "the cache alone was asked";
    };
    EXPECT_TRUE(passes_with_cache(folder, checks));
}

TEST(RetrievalCache, OldCrlsThatArePlayedBackTakeTheirPlaceInNothing) {
    const auto checks = [] {
        HttpServer server;
        const std::string url = server.url("/crl");
        const auto serve = [&](const Bytes& crl) {
            server.on("/crl", http_reply(text_of(crl)));
            const Retrieved served = retrieve(url);
            const DWORD absent = served.error == 0 ? 0 : CRYPT_E_NOT_FOUND;
            EXPECT_TRUE(absent != 0 || retrieve(url, cached_objects) == served);
            return served;
        };
        const auto point = [](const char* name) {
            return std::vector<Bytes>{
                issuing_distribution_point({.full_name = {testing::url(name)}})};
        };
        const Bytes future =
            CrlBuilder{.issuer = common_name("F"), .this_update = utc_time("490101000000Z")}.sign(
                Key::ec(0));
        const struct {
            const char* what;
            Bytes crl;
            Retrieved served;
        } rows[] = {
            {"first", crl_of_day(5), objects({crl_of_day(5)})},
            {"older", crl_of_day(3), objects({crl_of_day(5)})},
            {"newer", crl_of_day(6), objects({crl_of_day(6)})},
            {"older, as a delta", crl_of_day(2, "Issuer", {delta_crl_indicator(integer(1))}),
             objects({crl_of_day(2, "Issuer", {delta_crl_indicator(integer(1))})})},
            {"older, of a point", crl_of_day(3, "Issuer", point("http://a")),
             objects({crl_of_day(3, "Issuer", point("http://a"))})},
            {"older, of another point", crl_of_day(2, "Issuer", point("http://b")),
             objects({crl_of_day(2, "Issuer", point("http://b"))})},
            {"of another issuer", crl_of_day(1, "B"), objects({crl_of_day(1, "B")})},
            {"older than one that another has displaced", crl_of_day(5),
             failure(ERROR_INVALID_DATA)},
            {"as old as that", crl_of_day(6), objects({crl_of_day(6)})},
            {"of the future", future, objects({future})},
            {"older than one of the future", crl_of_day(1, "F"), objects({crl_of_day(1, "F")})},
            {"older than that",
             CrlBuilder{.issuer = common_name("F"), .this_update = utc_time("251231000000Z")}.sign(
                 Key::ec(0)),
             objects({crl_of_day(1, "F")})},
        };
        for (const auto& row : rows)
            EXPECT_EQ(serve(row.crl), row.served) << row.what;
    };
    const TemporaryFolder folder;
    EXPECT_TRUE(passes_with_cache(folder, checks));
}

TEST(RetrievalCache, TheLeastRecentlyUsedGoFirstAndForeignFilesStay) {
    const TemporaryFolder folder;
    const fs::path cache = folder.path() / "cache";
    const auto checks = [&] {
        HttpServer server;
        const Bytes crl = large_crl(200, Key::ec(0)); // some 10 KB
        const auto url = [&](int number) { return server.url("/" + std::to_string(number)); };
        const auto is_cached = [&](int number) {
            return retrieve(url(number), cached_objects).error == 0;
        };
        std::vector<fs::path> files;
        for (int number = 0; number < 3; ++number) {
            server.on("/" + std::to_string(number), http_reply(text_of(crl)));
            ASSERT_EQ(retrieve(url(number)), objects({crl}));
            for (const fs::path& file : files_of(cache))
                if (std::ranges::find(files, file) == files.end())
                    files.push_back(file);
        }
        ASSERT_EQ(files.size(), 3);
        for (const fs::path& file : {files[0], cache}) {
            struct stat status {};
            ASSERT_EQ(stat(file.c_str(), &status), 0);
            EXPECT_EQ(status.st_mode & 0777, file == cache ? 0700U : 0600U);
        }

        const std::string digest = files[0].stem();
        const fs::path abandoned = cache / (digest + ".0123456789abcdef.new");
        const fs::path young = cache / (digest + ".fedcba9876543210.new");
        const std::vector<fs::path> foreign = {cache / "notes.txt", cache / "x.new",
                                               cache / ("0" + digest + ".response"),
                                               cache / (digest + ".xyz3456789abcdef.new")};
        for (const fs::path& file : foreign)
            static_cast<void>(folder.write(file, std::string(50'000, 'x')));
        for (const fs::path& file : {abandoned, young})
            static_cast<void>(folder.write(file, "part"));
        for (const fs::path& file : files_of(cache))
            if (file != young)
                make_older(file, Times::of_change, 48h);

        make_older(files[0], Times::of_use, 30h);
        make_older(files[1], Times::of_use, 20h);
        make_older(files[2], Times::of_use, 25h);
        EXPECT_TRUE(is_cached(0)); // which makes it the one that was used last
        server.on("/3", http_reply(text_of(crl)));
        ASSERT_EQ(retrieve(url(3)), objects({crl}));
        EXPECT_TRUE(is_cached(0) && is_cached(1) && !is_cached(2) && is_cached(3));
        EXPECT_FALSE(fs::exists(abandoned));
        EXPECT_TRUE(fs::exists(young));
        EXPECT_TRUE(std::ranges::all_of(foreign, [](const fs::path& p) { return fs::exists(p); }));

        const Bytes too_large = large_crl(1000, Key::ec(0));
        server.on("/3", http_reply(text_of(too_large)));
        EXPECT_EQ(retrieve(url(3)), objects({too_large}));
        EXPECT_EQ(retrieve(url(3), cached_objects), objects({crl})) << "the old one stays";
        EXPECT_TRUE(is_cached(0) && is_cached(1));
    };
    EXPECT_TRUE(passes_with_cache(folder, checks, "cache_size = 35000\n"));
}

TEST(RetrievalCache, FilesThatOthersCouldHaveMadeAreNotServed) {
    const TemporaryFolder folder;
    const fs::path cache = folder.path() / "elsewhere" / "cache";
    const auto checks = [&] {
        setenv("NORVANE_CACHE_DIR", cache.c_str(), 1);
        HttpServer server;
        for (const char* path : {"/a", "/b"}) {
            server.on(path, http_reply(text_of(crl_of_day(1, path))));
            ASSERT_EQ(retrieve(server.url(path)).error, 0);
        }
        const auto files = files_of(cache);
        ASSERT_EQ(files.size(), 2) << "the environment names the folder";
        const auto served = [&] {
            return (retrieve(server.url("/a"), cached_objects).error == 0 ? 1 : 0) +
                   (retrieve(server.url("/b"), cached_objects).error == 0 ? 1 : 0);
        };
        EXPECT_EQ(served(), 2);
        fs::rename(files[0], cache / "kept");
        fs::copy_file(files[1], files[0]);
        EXPECT_EQ(served(), 1) << "a file of another URL";
        fs::remove(files[0]);
        fs::create_symlink(cache / "kept", files[0]);
        EXPECT_EQ(served(), 1) << "a link";
        fs::remove(files[0]);
        fs::copy_file(cache / "kept", files[0]);
        ASSERT_EQ(chmod(files[0].c_str(), 0622), 0);
        EXPECT_EQ(served(), 1) << "a file that all may write to";
        fs::remove(files[0]);
        fs::rename(cache / "kept", files[0]);
        EXPECT_EQ(served(), 2);
    };
    EXPECT_TRUE(passes_with_cache(folder, checks));
}

TEST(RetrievalCache, WithoutAUsableFolderNothingIsKeptAndAllElseWorks) {
    const TemporaryFolder folder;
    const fs::path open_to_all = folder.path() / "open";
    fs::create_directory(open_to_all);
    fs::permissions(open_to_all, fs::perms::all);
    for (const std::string& cache : {open_to_all.string(), std::string("/dev/null/x"),
                                     std::string("/proc/x"), std::string()}) {
        const auto checks = [&] {
            HttpServer server;
            server.on_with_etag("/", text_of(crl_of_day(1)), "\"1\"");
            for (int i = 0; i < 2; ++i) {
                EXPECT_EQ(retrieve(server.url("/")), objects({crl_of_day(1)})) << cache;
                EXPECT_EQ(retrieve(server.url("/"), cached_objects), failure(CRYPT_E_NOT_FOUND));
            }
        };
        EXPECT_TRUE(passes_when_configured("[retrieval]\ncache_folder = " + cache + "\n", checks));
    }
    EXPECT_TRUE(fs::is_empty(open_to_all));
}

} // namespace
} // namespace norvane::testing
