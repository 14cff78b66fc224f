// Asks for a long time from many threads, while CRLs are replaced and servers are dead, and tells
// what that does to memory. Ends with 1 if an answer was wrong.
//
//     norvane_soak SECONDS QUESTIONS THREADS   (0 for no limit, of which one must be there)

#include "support/CertificateBuilder.h"
#include "support/CrlBuilder.h"
#include "support/HttpServer.h"
#include "support/TemporaryFolder.h"

#include <norvane/wincrypt.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <malloc.h>
#include <openssl/evp.h>
#include <sys/wait.h>
#include <unistd.h>

namespace norvane::bench {
namespace {

using namespace testing;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t crl_entries = 9'000; // 440 KB
constexpr std::uint64_t questions_for_a_crl = 1'000;
constexpr auto time_for_a_file = 1500ms;
constexpr std::uint64_t local_questions_between = 64;
constexpr DWORD timeout_ms = 50;

const Key& root_key() { return Key::rsa(0); }
const Key& ca_key() { return Key::rsa(1); }
const Bytes root_id(20, 0x11);
const Bytes ca_id(20, 0x22);
const Bytes revoked_serial = large_crl_serial(7);
const Bytes good_serial = large_crl_serial(crl_entries + 1);

std::string text(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

Bytes ca_certificate(const std::string& issuer, const Key& issuer_key, const Bytes& issuer_id,
                     const std::string& name, const Key& key, const Bytes& id) {
    return CertificateBuilder{.issuer = common_name(issuer),
                              .subject = common_name(name),
                              .spki = key.spki(),
                              .extensions = {basic_constraints(Holder::ca),
                                             key_usage(named_bits({key_cert_sign, crl_sign})),
                                             subject_key_identifier(id),
                                             authority_key_identifier(issuer_id)}}
        .sign(issuer_key);
}

/// @param url_of_crl empty: the certificate names none.
Bytes leaf(const Bytes& serial, const std::string& url_of_crl = {}) {
    CertificateBuilder builder{.serial = serial,
                               .issuer = common_name("CA"),
                               .subject = common_name("Leaf"),
                               .spki = Key::rsa(2).spki(),
                               .extensions = {authority_key_identifier(ca_id)}};
    if (!url_of_crl.empty()) {
        builder.extensions.push_back(crl_distribution_points({{.full_name = {url(url_of_crl)}}}));
    }
    return builder.sign(ca_key());
}

/// A new CRL of the CA, different from all before it.
Bytes next_crl() {
    static std::atomic<int> number = 0;
    static const Bytes entries = [] {
        Bytes all;
        for (std::uint32_t index = 0; index < crl_entries; ++index) {
            const Bytes entry =
                CrlEntry{.serial = large_crl_serial(index), .extensions = {reason_code(1)}}
                    .encode();
            all.insert(all.end(), entry.begin(), entry.end());
        }
        return all;
    }();
    return CrlBuilder{
        .issuer = common_name("CA"),
        .encoded_entries = entries,
        .extensions = {authority_key_identifier(ca_id), crl_number(integer(++number))}}
        .sign(ca_key());
}

Bytes root_crl() {
    return CrlBuilder{.issuer = common_name("Root"),
                      .extensions = {authority_key_identifier(root_id)}}
        .sign(root_key());
}

enum class Expected { good, revoked };

struct Subject {
    PCCERT_CONTEXT certificate;
    Expected expected;
    bool brings_crl; ///< The caller's own store has the CRL.
};

PCCERT_CONTEXT context_of(const Bytes& encoded) {
    const PCCERT_CONTEXT context = CertCreateCertificateContext(X509_ASN_ENCODING, encoded.data(),
                                                                static_cast<DWORD>(encoded.size()));
    if (context == nullptr) {
        throw std::runtime_error("no context");
    }
    return context;
}

PCCERT_CONTEXT context_of_pem(const std::string& path) {
    std::ifstream file(path);
    const std::string pem{std::istreambuf_iterator<char>(file), {}};
    Bytes der(pem.size());
    constexpr std::string_view begin = "-----BEGIN CERTIFICATE-----";
    const std::size_t start = pem.find(begin) + begin.size();
    std::string body;
    for (const char c : pem.substr(start, pem.find("-----END") - start)) {
        if (c != '\n') {
            body += c;
        }
    }
    const int size =
        EVP_DecodeBlock(der.data(), reinterpret_cast<const unsigned char*>(body.data()),
                        static_cast<int>(body.size()));
    if (size <= 0) {
        throw std::runtime_error("cannot read " + path);
    }
    // The padding counts as octets; the certificate says itself how long it is.
    der.resize(4 + (static_cast<std::size_t>(der[2]) << 8) + der[3]);
    return context_of(der);
}

/// The store of the caller, made anew with every so many questions.
class CallersStore {
  public:
    HCERTSTORE share(std::uint64_t question) {
        const std::lock_guard lock(mutex_);
        if (store_ == nullptr || question / questions_for_a_crl != made_for_) {
            if (store_ != nullptr) {
                CertCloseStore(store_, 0);
            }
            made_for_ = question / questions_for_a_crl;
            const Bytes crl = next_crl();
            store_ = CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr);
            for (const Bytes& each : {crl, root_crl()}) {
                CertAddEncodedCRLToStore(store_, X509_ASN_ENCODING, each.data(),
                                         static_cast<DWORD>(each.size()), CERT_STORE_ADD_ALWAYS,
                                         nullptr);
            }
        }
        return CertDuplicateStore(store_);
    }

  private:
    std::mutex mutex_;
    HCERTSTORE store_ = nullptr;
    std::uint64_t made_for_ = 0;
};

bool answers_as_expected(const Subject& subject, CallersStore& callers, std::uint64_t question) {
    const HCERTSTORE crls = subject.brings_crl ? callers.share(question) : nullptr;
    CERT_REVOCATION_PARA para{};
    para.cbSize = sizeof para;
    para.hCrlStore = crls;
    para.dwUrlRetrievalTimeout = timeout_ms;
    CERT_REVOCATION_STATUS status{};
    status.cbSize = sizeof status;
    void* contexts[] = {const_cast<CERT_CONTEXT*>(subject.certificate)};
    const BOOL good = CertVerifyRevocation(X509_ASN_ENCODING, CERT_CONTEXT_REVOCATION_TYPE, 1,
                                           contexts, 0, &para, &status);
    if (crls != nullptr) {
        CertCloseStore(crls, 0);
    }
    return subject.expected == Expected::good ? good != FALSE
                                              : good == FALSE && status.dwError == CRYPT_E_REVOKED;
}

std::uint64_t resident_kilobytes() {
    std::uint64_t all = 0;
    std::uint64_t resident = 0;
    std::ifstream("/proc/self/statm") >> all >> resident;
    return resident * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE)) / 1024;
}

void lay_down(const char* section, const char* key, const std::string& value) {
    if (NorvaneSetConfiguration(section, key, value.c_str()) == FALSE) {
        throw std::runtime_error(std::string("cannot configure ") + key);
    }
}

/// A server with a new CRL for each request, in a process of its own: what it remembers of its
/// requests must not count as memory of the one that asks.
class CrlServer {
  public:
    CrlServer() {
        static_cast<void>(ca_key()); // for both
        int ends[2];
        if (pipe(ends) != 0) {
            throw std::runtime_error("no pipe");
        }
        child_ = fork();
        if (child_ == 0) {
            HttpServer server;
            server.on("/ca.crl", [](const HttpRequest&) { return http_reply(text(next_crl())); });
            const int port = server.port();
            static_cast<void>(!write(ends[1], &port, sizeof port));
            pause();
        }
        if (child_ < 0 || read(ends[0], &port_, sizeof port_) != sizeof port_) {
            throw std::runtime_error("no server");
        }
    }
    CrlServer(const CrlServer&) = delete;
    CrlServer& operator=(const CrlServer&) = delete;
    ~CrlServer() {
        kill(child_, SIGKILL);
        waitpid(child_, nullptr, 0);
    }

    [[nodiscard]] std::string url() const {
        return "http://127.0.0.1:" + std::to_string(port_) + "/ca.crl";
    }

  private:
    pid_t child_;
    int port_ = 0;
};

int soak(std::uint64_t seconds, std::uint64_t questions, unsigned threads) {
    const CrlServer server;
    const TemporaryFolder folder;
    const std::string examples = EXAMPLES;
    const auto write = [&](const char* name, const Bytes& content) {
        return folder.write(name, {reinterpret_cast<const char*>(content.data()), content.size()});
    };
    write("Root/root.crt",
          ca_certificate("Root", root_key(), root_id, "Root", root_key(), root_id));
    write("CA/ca.crt", ca_certificate("Root", root_key(), root_id, "CA", ca_key(), ca_id));
    write("CA/root.crl", root_crl());
    write("CA/ca.crl", next_crl());
    lay_down("stores", "Root", (folder.path() / "Root").string() + ":" + examples + "/stores/Root");
    lay_down("stores", "CA", (folder.path() / "CA").string() + ":" + examples + "/stores/CA");
    lay_down("retrieval", "cache_folder", (folder.path() / "cache").string());

    const HttpServer dead(HttpServer::Accepts::nothing);

    // The first two are local, and most questions are about them.
    const std::vector<Subject> subjects = {
        {context_of(leaf(good_serial)), Expected::good, true},
        {context_of(leaf(revoked_serial)), Expected::revoked, true},
        {context_of(leaf(good_serial, dead.url("/ca.crl"))), Expected::good, false},
        {context_of(leaf(revoked_serial, dead.url("/ca.crl"))), Expected::revoked, false},
        {context_of(leaf(good_serial, server.url())), Expected::good, false},
        {context_of(leaf(revoked_serial, server.url())), Expected::revoked, false},
        {context_of_pem(examples + "/rsa-revoked.pem"), Expected::revoked, false},
        {context_of_pem(examples + "/gost-good.pem"), Expected::good, false},
        {context_of_pem(examples + "/gost-revoked.pem"), Expected::revoked, false},
    };

    std::atomic<std::uint64_t> asked = 0;
    std::atomic<std::uint64_t> wrong = 0;
    std::atomic<bool> stop = false;
    const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds);
    CallersStore callers;
    const auto ask = [&] {
        while (!stop) {
            const std::uint64_t question = asked++;
            if ((questions != 0 && question >= questions) ||
                (seconds != 0 && Clock::now() >= end)) {
                break;
            }
            const bool is_local = question % local_questions_between != 0;
            const Subject& subject =
                subjects[is_local ? question % 2
                                  : question / local_questions_between % subjects.size()];
            if (!answers_as_expected(subject, callers, question)) {
                ++wrong;
                std::fprintf(stderr, "a wrong answer about subject %td\n",
                             &subject - subjects.data());
            }
        }
    };
    std::vector<std::thread> askers;
    askers.reserve(threads);
    for (unsigned i = 0; i < threads; ++i) {
        askers.emplace_back(ask);
    }
    std::thread replacer([&] {
        for (int round = 0; !stop; ++round) {
            std::filesystem::rename(write("new.crl", next_crl()), folder.path() / "CA/ca.crl");
            std::this_thread::sleep_for(time_for_a_file);
            if (round % 8 == 0) {
                std::printf("%10llu questions, %llu wrong, %llu KB resident, %zu KB in blocks\n",
                            static_cast<unsigned long long>(asked.load()),
                            static_cast<unsigned long long>(wrong.load()),
                            static_cast<unsigned long long>(resident_kilobytes()),
                            mallinfo2().uordblks / 1024);
                std::fflush(stdout);
            }
        }
    });
    for (std::thread& asker : askers) {
        asker.join();
    }
    stop = true;
    replacer.join();
    for (const Subject& subject : subjects) {
        CertFreeCertificateContext(subject.certificate);
    }
    return wrong == 0 ? 0 : 1;
}

} // namespace
} // namespace norvane::bench

int main(int argc, char** argv) {
    const auto number = [&](int place) {
        return argc > place ? std::strtoull(argv[place], nullptr, 10) : 0;
    };
    const std::uint64_t seconds = number(1);
    const std::uint64_t questions = number(2);
    const auto threads = static_cast<unsigned>(number(3));
    if ((seconds == 0 && questions == 0) || threads == 0) {
        std::fputs("usage: norvane_soak SECONDS QUESTIONS THREADS\n", stderr);
        return 2;
    }
    return norvane::bench::soak(seconds, questions, threads);
}
