// What threads and callers of one process have in common, and how long they wait.
#include "retrieval/Retrieval.h"

#include <atomic>
#include <dlfcn.h>
#include <netdb.h>
#include <thread>

namespace {

std::atomic<int> look_ups = 0;

} // namespace

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
    const TemporaryFolder folder;
    EXPECT_TRUE(passes_with_cache(folder, checks, "timeout = 300ms\n"));
}

TEST(SharedRetrieval, ThreadsShareOneRequestAndOneStoreEachInItsOwnTime) {
    const auto checks = [] {
        constexpr int thread_count = 8;
        HttpServer server;
        HttpReply slow = http_reply(text_of(crl_of_day(1)));
        slow.before = 700ms;
        server.on("/", slow);
        std::array<void*, thread_count> stores{};
        std::atomic<int> timed_out = 0;
        std::vector<std::thread> threads;
        for (void*& store : stores)
            threads.emplace_back([&] {
                EXPECT_TRUE(CryptRetrieveObjectByUrlA(server.url("/").c_str(), CONTEXT_OID_CRL,
                                                      all_objects, ample_ms, &store, nullptr,
                                                      nullptr, nullptr, nullptr));
            });
        for (int i = 0; i < thread_count; ++i)
            threads.emplace_back([&] {
                const auto start = Clock::now();
                timed_out += retrieve(server.url("/"), all_objects, 150).error == ERROR_TIMEOUT;
                EXPECT_LT(Clock::now() - start, 250ms);
            });
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_EQ(timed_out, thread_count);
        EXPECT_EQ(server.requests("/").size(), 1);
        void* cached = nullptr;
        EXPECT_TRUE(CryptRetrieveObjectByUrlA(server.url("/").c_str(), CONTEXT_OID_CRL,
                                              cached_objects, 0, &cached, nullptr, nullptr, nullptr,
                                              nullptr));
        for (void* store : stores) {
            EXPECT_EQ(store, cached);
            EXPECT_TRUE(CertCloseStore(store, 0));
        }
        const Bytes other = crl_of_day(2);
        EXPECT_FALSE(CertAddEncodedCRLToStore(cached, X509_ASN_ENCODING, other.data(),
                                              static_cast<DWORD>(other.size()),
                                              CERT_STORE_ADD_ALWAYS, nullptr));
        EXPECT_EQ(GetLastError(), E_ACCESSDENIED);
        // A newer response is another store; who holds the old one keeps it.
        server.on("/", http_reply(text_of(other)));
        EXPECT_EQ(retrieve(server.url("/")), objects({other}));
        EXPECT_EQ(objects(crls_of(cached)), objects({crl_of_day(1)}));
        EXPECT_TRUE(CertCloseStore(cached, 0));
    };
    const TemporaryFolder folder;
    EXPECT_TRUE(passes_with_cache(folder, checks));
}

TEST(SharedRetrieval, ReadersAndWritersOfAllUrlsMeetWithoutHarm) {
    const auto checks = [] {
        HttpServer server;
        constexpr int url_count = 3;
        constexpr int thread_count = 6;
        constexpr int rounds = 60;
        std::atomic<int> day = 1;
        for (int i = 0; i < url_count; ++i)
            server.on("/" + std::to_string(i), [&](const HttpRequest&) {
                return http_reply(text_of(crl_of_day(1 + day++ % 28)));
            });
        std::atomic<int> served = 0;
        std::vector<std::thread> threads;
        for (int thread = 0; thread < thread_count; ++thread)
            threads.emplace_back([&, thread] {
                for (int i = 0; i < rounds; ++i) {
                    const std::string url = server.url("/" + std::to_string(i % url_count));
                    const Retrieved got =
                        retrieve(url, thread % 2 != 0 ? all_objects : cached_objects);
                    EXPECT_TRUE(got.objects.size() == 1 || got.error == CRYPT_E_NOT_FOUND);
                    served += got.error == 0;
                }
            });
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_GE(served, thread_count / 2 * rounds);
    };
    const TemporaryFolder folder;
    EXPECT_TRUE(passes_with_cache(folder, checks));
}

TEST(SharedRetrieval, ProxiesOfTheConfigurationAndTheEnvironmentAreAsked) {
    const TemporaryFolder folder;
    const std::string url = "http://crl.example.invalid/crl";
    const auto checks = [&](HttpServer& proxy) {
        proxy.on("/crl", http_reply(text_of(crl_of_day(1))));
        EXPECT_EQ(retrieve(url), objects({crl_of_day(1)}));
        ASSERT_EQ(proxy.requests("/crl").size(), 1);
        EXPECT_EQ(proxy.requests("/crl")[0].target, url);
    };
    EXPECT_TRUE(passes_with_cache(folder, [&] {
        HttpServer proxy;
        setenv("http_proxy", proxy.url("").c_str(), 1);
        checks(proxy);
    }));
    // The port of a proxy must be known before the process has its configuration.
    EXPECT_TRUE(passes_with_cache(folder, [&] {
        HttpServer proxy;
        std::ofstream(getenv("NORVANE_CONFIG")) << "[retrieval]\nproxy = " << proxy.url("") << "\n";
        setenv("http_proxy", "http://127.0.0.1:1", 1);
        checks(proxy);
    }));
}

} // namespace
} // namespace norvane::testing
