// What threads and callers of one process have in common, and how long they wait.
#include "retrieval/Retrieval.h"

#include <atomic>
#include <dlfcn.h>
#include <netdb.h>
#include <thread>

static std::atomic<int> look_ups = 0;

// Stands before the C library's, for this program and the libraries that it loads. Names that end
// in ".slow" are looked up in vain for two seconds.
extern "C" __attribute__((visibility("default"))) int
getaddrinfo(const char* node, const char* service, const addrinfo* hints, addrinfo** result) {
    static const auto original =
        reinterpret_cast<decltype(&getaddrinfo)>(dlsym(RTLD_NEXT, "getaddrinfo"));
    ++look_ups;
    if (node != nullptr && std::string_view(node).ends_with(".slow")) {
        std::this_thread::sleep_for(std::chrono::seconds{2});
        return EAI_AGAIN;
    }
    return original(node, service, hints, result);
}

namespace norvane::testing {
namespace {

using namespace std::chrono_literals;

TEST(SharedRetrieval, ALookUpThatHangsDoesNotOutlastTheTime) {
    const auto checks = [] {
        constexpr DWORD limit_ms = 200;
        for (const std::string url : {"http://http.slow/", "https://https.slow/",
                                      "ldap://ldap.slow/o=x", "ldaps://ldaps.slow/o=x"}) {
            const int before = look_ups;
            EXPECT_EQ(retrieve(url, cached_objects, limit_ms), failure(CRYPT_E_NOT_FOUND));
            EXPECT_EQ(look_ups, before) << "the cache alone was asked";
            for (int attempt = 0; attempt < 2; ++attempt) {
                const auto start = Clock::now();
                EXPECT_EQ(retrieve(url, all_objects, limit_ms), failure(ERROR_TIMEOUT));
                EXPECT_LT(Clock::now() - start, milliseconds(limit_ms + 100)) << url;
                EXPECT_GE(Clock::now() - start, milliseconds(limit_ms)) << url;
            }
            EXPECT_GT(look_ups, before) << "this program's function was called";
        }
        // No time given: that of the configuration.
        const auto start = Clock::now();
        EXPECT_EQ(retrieve("http://http2.slow/", all_objects, 0), failure(ERROR_TIMEOUT));
        EXPECT_LT(Clock::now() - start, 400ms);
    };
    EXPECT_TRUE(passes_with_cache(checks, "timeout = 300ms\n"));
}

TEST(SharedRetrieval, ThreadsShareOneRequestAndOneStoreEachInItsOwnTime) {
    const auto checks = [] {
        constexpr int thread_count = 8;
        HttpServer server;
        const std::string url = server.url("/");
        const Bytes first = crl_of(260101);
        const Bytes second = crl_of(260102);
        HttpReply slow = reply_of(first);
        slow.before = 700ms;
        server.on("/", slow);
        std::array<void*, thread_count> stores{};
        std::atomic<int> timed_out = 0;
        std::vector<std::thread> threads;
        for (void*& store : stores) {
            threads.emplace_back([&] { store = retrieve_handle(url); });
            threads.emplace_back([&] {
                const auto start = Clock::now();
                timed_out += retrieve(url, all_objects, 150).error == ERROR_TIMEOUT;
                EXPECT_LT(Clock::now() - start, 250ms);
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_EQ(timed_out, thread_count);
        EXPECT_EQ(server.requests("/").size(), 1);
        void* const cached = retrieve_handle(url, cached_objects);
        for (void* store : stores) {
            EXPECT_EQ(store, cached);
            EXPECT_TRUE(CertCloseStore(store, 0));
        }
        EXPECT_FALSE(CertAddEncodedCRLToStore(cached, X509_ASN_ENCODING, second.data(),
                                              static_cast<DWORD>(second.size()),
                                              CERT_STORE_ADD_ALWAYS, nullptr));
        EXPECT_EQ(GetLastError(), E_ACCESSDENIED);
        // A newer response is another store; who holds the old one keeps it.
        server.on("/", reply_of(second));
        EXPECT_EQ(retrieve(url), objects({second}));
        EXPECT_EQ(objects(content_of(cached)), objects({first}));
        EXPECT_TRUE(CertCloseStore(cached, 0));
    };
    EXPECT_TRUE(passes_with_cache(checks));
}

TEST(SharedRetrieval, AChildDoesNotWaitForWhatItsParentHasBegun) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the sanitizer knows no threads of a child of threads";
#endif
    const auto checks = [] {
        HttpServer server;
        const std::string url = server.url("/");
        HttpReply slow = reply_of(crl_of(260101));
        slow.before = 700ms;
        server.on("/", slow);
        std::thread asker([&] { EXPECT_EQ(retrieve(url), objects({crl_of(260101)})); });
        while (server.requests("/").empty())
            std::this_thread::yield();
        const pid_t child = fork();
        if (child == 0)
            _exit(retrieve(url) == objects({crl_of(260101)}) ? 0 : 1);
        int status = -1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
        EXPECT_EQ(server.requests("/").size(), 2);
        asker.join();
    };
    EXPECT_TRUE(passes_with_cache(checks));
}

TEST(SharedRetrieval, ProxiesOfTheConfigurationAndTheEnvironmentAreAsked) {
    for (const bool of_configuration : {false, true}) {
        const auto checks = [&] {
            HttpServer proxy;
            const std::string url = "http://crl.example.invalid/crl";
            // The port of a proxy must be known before the process has its configuration.
            if (of_configuration)
                std::ofstream(getenv("NORVANE_CONFIG"))
                    << "[retrieval]\nproxy = " << proxy.url("") << "\n";
            setenv("http_proxy", of_configuration ? "http://127.0.0.1:1" : proxy.url("").c_str(),
                   1);
            proxy.on("/crl", reply_of(crl_of(260101)));
            EXPECT_EQ(retrieve(url), objects({crl_of(260101)}));
            ASSERT_EQ(proxy.requests("/crl").size(), 1);
            EXPECT_EQ(proxy.requests("/crl")[0].target, url);
        };
        EXPECT_TRUE(passes_with_cache(checks));
    }
}

} // namespace
} // namespace norvane::testing
