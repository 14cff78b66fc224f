// What the cache keeps, what it serves, and what it leaves alone.
#include "platform/FileMaterial.h"
#include "retrieval/Retrieval.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <thread>

namespace norvane::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

std::vector<fs::path> files_of(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const auto& item : fs::directory_iterator(folder))
        files.push_back(item.path());
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
    const auto checks = [] {
        HttpServer server;
        const Bytes first = crl_of(260101);
        const Bytes second = crl_of(260102);
        const Bytes third = crl_of(260103);
        const std::string body = text_of(first);
        const auto header = [&](const char* path, const char* name) {
            auto headers = server.requests(path).back().headers;
            return headers[name];
        };
        const std::string date = "Fri, 02 Jan 2026 00:00:00 GMT";
        server.on_with_etag("/etag", body, "\"1\"");
        server.on("/date", http_reply(body, "200 OK", {"Last-modified:" + date}));
        server.on("/none", reply_of(first));
        for (const char* path : {"/etag", "/date", "/none"}) {
            EXPECT_EQ(retrieve(server.url(path)), objects({first})) << path;
            EXPECT_EQ(header(path, "if-none-match") + header(path, "if-modified-since"), "");
        }
        server.on("/date", http_reply("", "304 Not Modified"));
        for (const char* path : {"/etag", "/date", "/none"})
            EXPECT_EQ(retrieve(server.url(path)), objects({first})) << path;
        EXPECT_EQ(header("/etag", "if-none-match"), "\"1\"");
        EXPECT_EQ(header("/date", "if-modified-since"), date);
        server.on_with_etag("/etag", text_of(second), "\"2\"");
        EXPECT_EQ(retrieve(server.url("/etag")), objects({second}));

        // The tag of one resource says nothing about another one, to which a redirection leads now.
        server.on("/there", http_redirect("/etag"));
        EXPECT_EQ(retrieve(server.url("/there")), objects({second}));
        server.on_with_etag("/elsewhere", text_of(third), "\"2\"");
        server.on("/there", http_redirect("/elsewhere"));
        EXPECT_EQ(retrieve(server.url("/there")), objects({third}));

        // Nothing that an earlier response or the user's home holds identifies the caller.
        static_cast<void>(std::ofstream(fs::path(getenv("HOME")) / ".netrc")
                          << "machine 127.0.0.1 login a password b\n");
        server.on("/cookie", http_reply(text_of(third), "200 OK", {"Set-Cookie: a=b"}));
        EXPECT_EQ(retrieve(server.url("/cookie")), objects({third}));
        server.on("/cookie", http_reply(body, "401 Unauthorized", {"WWW-Authenticate: Basic"}));
        EXPECT_EQ(retrieve(server.url("/cookie")), failure(HTTP_E_STATUS_FIRST + 401));
        for (const char* name : {"cookie", "authorization", "accept-encoding"})
            EXPECT_EQ(header("/cookie", name), "");

        const std::size_t connections = server.connections();
        EXPECT_EQ(retrieve(server.url("/there"), cached_objects), objects({third}));
        EXPECT_EQ(retrieve(server.url("/absent"), cached_objects), failure(CRYPT_E_NOT_FOUND));
        EXPECT_EQ(server.connections(), connections) << "the cache alone was asked";
    };
    EXPECT_TRUE(passes_with_cache(checks));
}

TEST(RetrievalCache, OldCrlsThatArePlayedBackTakeTheirPlaceInNothing) {
    const auto checks = [] {
        HttpServer server;
        const auto point = [](const char* name) {
            return issuing_distribution_point({.full_name = {testing::url(name)}});
        };
        const struct {
            const char* what;
            int date;
            int served; // 0: the response is refused
            const char* issuer = "Issuer";
            std::vector<Bytes> extensions = {};
        } rows[] = {
            {"first", 260105, 260105},
            {"older", 260103, 260105},
            {"newer", 260106, 260106},
            {"older, as a delta", 260102, 260102, "Issuer", {delta_crl_indicator(integer(1))}},
            {"older, of a point", 260103, 260103, "Issuer", {point("http://a")}},
            {"older, of another point", 260102, 260102, "Issuer", {point("http://b")}},
            {"of another issuer", 260101, 260101, "B"},
            {"older than one that another has displaced", 260105, 0},
            {"as old as that", 260106, 260106},
            {"of the future", 490101, 490101, "B"},
            {"older than one of the future", 260101, 260101, "B"},
        };
        for (const auto& row : rows) {
            server.on("/", reply_of(crl_of(row.date, row.issuer, row.extensions)));
            const Retrieved expected =
                row.served == 0 ? failure(ERROR_INVALID_DATA)
                                : objects({crl_of(row.served, row.issuer, row.extensions)});
            EXPECT_EQ(retrieve(server.url("/")), expected) << row.what;
            const Retrieved cached = retrieve(server.url("/"), cached_objects);
            EXPECT_TRUE(row.served == 0 || cached == expected) << row.what << ": " << cached;
        }
    };
    EXPECT_TRUE(passes_with_cache(checks));
}

TEST(RetrievalCache, NoOtherUrlAndNoNeighbourBringsAnOldCrlBack) {
    const TemporaryFolder folder;
    const fs::path cache = folder.path() / "cache";
    const auto remove_with = [&](std::string_view ending) {
        for (const fs::path& file : files_of(cache))
            if (file.extension() == ending)
                fs::remove(file);
    };
    const auto checks = [&] {
        HttpServer server;
        const Bytes old = crl_of(260101);
        const Bytes recent = crl_of(260102);
        const Bytes twin = crl_of(260102, "Issuer", {crl_number(integer(7))});
        const Bytes other = crl_of(260101, "Other");
        const Bytes future = crl_of(490101, "Other");
        const Retrieved absent = failure(CRYPT_E_NOT_FOUND);
        const struct {
            std::string path;
            std::vector<Bytes> sent; // nothing: the server is not asked
            Retrieved told;
            std::function<void()> before = [] {};
        } rows[] = {
            {"/early", {old}, objects({old})},
            {"/a", {recent, old}, objects({recent})},
            {"/early", {}, absent},
            {"/b", {old}, failure(ERROR_INVALID_DATA)},
            {"/b", {}, absent},
            {"/bundle", {old, other}, objects({other})},
            {"/bundle", {}, objects({other})},
            {"/bundle", {other, future, twin, recent}, objects({other, future, twin, recent})},
            {"/b", {old}, failure(ERROR_INVALID_DATA), [&] { remove_with(".response"); }},
            {"/b",
             {old},
             failure(ERROR_INVALID_DATA),
             [&] {
                 for (const fs::path& file : files_of(cache))
                     make_older(file, Times::of_change, 23h);
             }},
            {"/b",
             {old},
             objects({old}),
             [&] {
                 for (const fs::path& file : files_of(cache))
                     make_older(file, Times::of_change, 25h);
             }},
            {"/b", {recent}, objects({recent})},
            {"/b", {old}, objects({old}), [&] { remove_with(".served"); }},
        };
        for (const auto& row : rows) {
            SCOPED_TRACE("row " + std::to_string(&row - rows));
            row.before();
            std::string body;
            for (const Bytes& crl : row.sent)
                body += pem("X509 CRL", crl);
            server.on(row.path, http_reply(body));
            EXPECT_EQ(retrieve(server.url(row.path), body.empty() ? cached_objects : all_objects),
                      row.told);
        }

        // Of the scopes that a response makes up, few leave a mark.
        std::string junk;
        for (int i = 0; i < 200; ++i)
            junk += pem("X509 CRL", crl_of(260101, "Junk " + std::to_string(i)));
        server.on("/junk", http_reply(junk));
        EXPECT_EQ(retrieve(server.url("/junk")).objects.size(), 200);
        EXPECT_LT(std::ranges::count(files_of(cache), ".served", &fs::path::extension), 100);
    };
    EXPECT_TRUE(passes_with_cache(checks, "", folder));
}

TEST(RetrievalCache, MarksOfOtherProcessesAreNoticedInAFolderThatWasStill) {
    const TemporaryFolder folder;
    const fs::path cache = folder.path() / "cache";
    const auto checks = [&] {
        HttpServer server;
        const auto expect = [&](const char* path, int date, DWORD flags) {
            server.on(path, reply_of(crl_of(date, path)));
            EXPECT_EQ(retrieve(server.url(path), flags), objects({crl_of(date, path)})) << path;
        };
        std::vector<fs::path> marks; // of CRLs that are newer than what is cached
        for (const char* path : {"/moved", "/opened"}) {
            expect(path, 260102, all_objects);
            for (const fs::path& file : files_of(cache))
                if (file.extension() == ".served")
                    fs::rename(file, marks.emplace_back(folder.path() / file.filename()));
        }
        for (const char* path : {"/moved", "/opened"})
            expect(path, 260101, all_objects);
        fs::permissions(marks.at(1), fs::perms{0622});
        fs::rename(marks[1], cache / marks[1].filename());
        // Nothing is remembered about a folder that has just changed.
        const auto wait_until_settled = [] { std::this_thread::sleep_for(3100ms); };
        wait_until_settled();
        for (const char* path : {"/moved", "/opened", "/moved", "/opened"})
            expect(path, 260101, cached_objects);
        fs::permissions(cache / marks[1].filename(), fs::perms{0600});
        EXPECT_EQ(retrieve(server.url("/opened"), cached_objects), failure(CRYPT_E_NOT_FOUND));
        fs::rename(marks[0], cache / marks[0].filename());
        wait_until_settled();
        EXPECT_EQ(retrieve(server.url("/moved"), cached_objects), failure(CRYPT_E_NOT_FOUND));
    };
    EXPECT_TRUE(passes_with_cache(checks, "", folder));
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
        for (int number = 0; number < 4; ++number)
            server.on("/" + std::to_string(number), reply_of(crl));
        for (int number = 0; number < 3; ++number) {
            ASSERT_EQ(retrieve(url(number)), objects({crl}));
            for (const fs::path& file : files_of(cache))
                if (file.extension() == ".response" &&
                    std::ranges::find(files, file) == files.end())
                    files.push_back(file);
        }
        ASSERT_EQ(files.size(), 3);
        EXPECT_EQ(fs::status(cache).permissions(), fs::perms{0700});
        EXPECT_EQ(fs::status(files[0]).permissions(), fs::perms{0600});

        const std::string digest = files[0].stem();
        const fs::path abandoned = folder.write(cache / (digest + ".0123456789abcdef.new"), "part");
        const fs::path young = folder.write(cache / (digest + ".fedcba9876543210.new"), "part");
        std::vector<fs::path> foreign;
        for (const std::string& name :
             {std::string("notes.txt"), std::string("x.new"), "0" + digest + ".response",
              digest + ".xyz3456789abcdef.new"})
            foreign.push_back(folder.write(cache / name, std::string(50'000, 'x')));
        for (const fs::path& file : files_of(cache))
            if (file != young)
                make_older(file, Times::of_change, 48h);
        make_older(files[0], Times::of_use, 30h);
        make_older(files[1], Times::of_use, 20h);
        make_older(files[2], Times::of_use, 25h);
        EXPECT_TRUE(is_cached(0)); // which makes it the one that was used last
        ASSERT_EQ(retrieve(url(3)), objects({crl}));
        EXPECT_TRUE(is_cached(0) && is_cached(1) && !is_cached(2) && is_cached(3));
        EXPECT_TRUE(!fs::exists(abandoned) && fs::exists(young));
        EXPECT_TRUE(std::ranges::all_of(foreign, [](const fs::path& p) { return fs::exists(p); }));

        const Bytes too_large = large_crl(1000, Key::ec(0));
        server.on("/3", reply_of(too_large));
        EXPECT_EQ(retrieve(url(3)), objects({too_large}));
        EXPECT_EQ(retrieve(url(3), cached_objects), objects({crl})) << "the old one stays";
        EXPECT_TRUE(is_cached(0) && is_cached(1));
    };
    EXPECT_TRUE(passes_with_cache(checks, "cache_size = 35000\n", folder));
}

TEST(RetrievalCache, FilesThatOthersCouldHaveMadeAreNotServed) {
    const TemporaryFolder folder;
    const fs::path cache = folder.path() / "elsewhere" / "cache";
    const auto checks = [&] {
        setenv("NORVANE_CACHE_DIR", cache.c_str(), 1);
        HttpServer server;
        for (const char* path : {"/a", "/b"}) {
            server.on(path, reply_of(crl_of(260101, path)));
            ASSERT_EQ(retrieve(server.url(path)).error, 0);
        }
        auto files = files_of(cache);
        std::erase_if(files, [](const fs::path& p) { return p.extension() != ".response"; });
        ASSERT_EQ(files.size(), 2) << "the environment names the folder";
        const fs::path kept = cache / "kept";
        fs::copy_file(files[0], kept);
        const std::pair<const char*, std::function<void()>> rows[] = {
            {"of another URL", [&] { fs::copy_file(files[1], files[0]); }},
            {"a link", [&] { fs::create_symlink(kept, files[0]); }},
            {"writable for all",
             [&] {
                 fs::copy_file(kept, files[0]);
                 fs::permissions(files[0], fs::perms{0622});
             }},
        };
        for (const auto& [what, make] : rows) {
            fs::remove(files[0]);
            make();
            int served = 0;
            for (const char* path : {"/a", "/b"})
                served += retrieve(server.url(path), cached_objects).error == 0 ? 1 : 0;
            EXPECT_EQ(served, 1) << what;
        }
    };
    EXPECT_TRUE(passes_with_cache(checks));
}

TEST(RetrievalCache, WithoutAUsableFolderNothingIsKeptAndAllElseWorks) {
    const TemporaryFolder folder;
    fs::permissions(folder.path(), fs::perms::all);
    for (const std::string& cache : {folder.path().string(), std::string("/dev/null/x"),
                                     std::string("/proc/x"), std::string()}) {
        const auto checks = [&] {
            HttpServer server;
            server.on_with_etag("/", text_of(crl_of(260101)), "\"1\"");
            for (int i = 0; i < 2; ++i) {
                EXPECT_EQ(retrieve(server.url("/")), objects({crl_of(260101)})) << cache;
                EXPECT_EQ(retrieve(server.url("/"), cached_objects), failure(CRYPT_E_NOT_FOUND));
            }
        };
        EXPECT_TRUE(passes_when_configured("[retrieval]\ncache_folder = " + cache + "\n", checks));
    }
    EXPECT_TRUE(fs::is_empty(folder.path()));
}

} // namespace
} // namespace norvane::testing
