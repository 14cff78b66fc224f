#include "Material.h"
#include "Rate.h"
#include "SideBySide.h"
#include "support/TemporaryFolder.h"

#include <norvane/revocation.h>

#include <openssl/x509.h>
#include <openssl/x509_vfy.h>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

namespace norvane::bench {
namespace {

using namespace testing;

void require(bool done) {
    if (!done) {
        throw std::runtime_error("a certificate that is good is not found so");
    }
}

// ---- Material: a root, a leaf, and CRLs, all with RSA-2048 and key identifiers ----

const Bytes root_key_id(20, 0x11);

Bytes ca_certificate(const std::string& name, const Key& key, const Bytes& key_id) {
    return CertificateBuilder{.issuer = common_name(name),
                              .subject = common_name(name),
                              .spki = key.spki(),
                              .extensions = {basic_constraints(Holder::ca),
                                             key_usage(named_bits({key_cert_sign, crl_sign})),
                                             subject_key_identifier(key_id)}}
        .sign(key);
}

const Bytes& root() {
    static const Bytes certificate = ca_certificate("Root", Key::rsa(0), root_key_id);
    return certificate;
}

const Bytes& leaf() {
    static const Bytes certificate = CertificateBuilder{
        .serial = Bytes(16, 0x42),
        .issuer = common_name("Root"),
        .subject = common_name("Leaf"),
        .spki = Key::rsa(1).spki(),
        .extensions = {basic_constraints(Holder::end_entity),
                       key_usage(named_bits({digital_signature})),
                       authority_key_identifier(
                           root_key_id)}}.sign(Key::rsa(0));
    return certificate;
}

/// testing::large_crl with the extensions that CRLs have.
Bytes crl_of(std::uint32_t entries) {
    Bytes encoded_entries;
    for (std::uint32_t index = 0; index < entries; ++index) {
        append(
            encoded_entries,
            CrlEntry{.serial = large_crl_serial(index), .extensions = {reason_code(1)}}.encode());
    }
    return CrlBuilder{.issuer = common_name("Root"),
                      .encoded_entries = std::move(encoded_entries),
                      .extensions = {authority_key_identifier(root_key_id), crl_number(integer(1))}}
        .sign(Key::rsa(0));
}

const Bytes& small_crl() {
    static const Bytes crl = crl_of(10);
    return crl;
}

// ---- Both sides ----

/// The system stores of this process, laid down before any benchmark asks for them.
class SystemStores {
  public:
    SystemStores() {
        add_root("root", root());
        require(NorvaneSetConfiguration("stores", "Root", folder_.path().c_str()) != FALSE &&
                NorvaneSetConfiguration("stores", "CA", "") != FALSE);
    }
    void add_root(const std::string& file, const Bytes& certificate) const {
        static_cast<void>(folder_.write(
            file, {reinterpret_cast<const char*>(certificate.data()), certificate.size()}));
    }

  private:
    TemporaryFolder folder_;
};
const SystemStores system_stores;

/// Everything but the root, which the "Root" store has, comes from its encoding each time.
void call_export(const Bytes& crl) {
    const PCCERT_CONTEXT certificate = CertCreateCertificateContext(
        X509_ASN_ENCODING, leaf().data(), static_cast<DWORD>(leaf().size()));
    HCERTSTORE const crls = CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr);
    CertAddEncodedCRLToStore(crls, X509_ASN_ENCODING, crl.data(), static_cast<DWORD>(crl.size()),
                             CERT_STORE_ADD_ALWAYS, nullptr);
    CERT_REVOCATION_PARA para{};
    para.cbSize = sizeof para;
    para.hCrlStore = crls;
    CERT_REVOCATION_STATUS status{};
    status.cbSize = sizeof status;
    PVOID context = const_cast<CERT_CONTEXT*>(certificate);
    require(CertDllVerifyRevocation(X509_ASN_ENCODING, CERT_CONTEXT_REVOCATION_TYPE, 1, &context, 0,
                                    &para, &status) != FALSE);
    CertCloseStore(crls, 0);
    CertFreeCertificateContext(certificate);
}

template <auto free>
struct Free {
    template <class Object>
    void operator()(Object* object) const {
        free(object);
    }
};
template <class Object, auto free>
using Owned = std::unique_ptr<Object, Free<free>>;

/// X509_verify_cert with the check of the CRL, everything parsed each time.
void call_openssl(const Bytes& crl) {
    const auto parse = [](auto d2i, const Bytes& bytes) {
        const unsigned char* at = bytes.data();
        return d2i(nullptr, &at, static_cast<long>(bytes.size()));
    };
    const Owned<X509, X509_free> certificate(parse(d2i_X509, leaf()));
    const Owned<X509, X509_free> anchor(parse(d2i_X509, root()));
    const Owned<X509_CRL, X509_CRL_free> list(parse(d2i_X509_CRL, crl));
    const Owned<X509_STORE, X509_STORE_free> store(X509_STORE_new());
    X509_STORE_add_cert(store.get(), anchor.get());
    X509_STORE_add_crl(store.get(), list.get());
    X509_STORE_set_flags(store.get(), X509_V_FLAG_CRL_CHECK);
    const Owned<X509_STORE_CTX, X509_STORE_CTX_free> run(X509_STORE_CTX_new());
    X509_STORE_CTX_init(run.get(), store.get(), certificate.get(), nullptr);
    require(X509_verify_cert(run.get()) == 1);
}

/// What a verdict cannot do without: the leaf's signature, the CRL's, and the root's own.
class ThreeBareVerifications {
  public:
    ThreeBareVerifications() {
        const Bytes spki = Key::rsa(0).spki();
        const unsigned char* at = spki.data();
        key_.reset(d2i_PUBKEY(nullptr, &at, static_cast<long>(spki.size())));
    }
    void verify() const {
        for (int i = 0; i < 3; ++i) {
            const Owned<EVP_MD_CTX, EVP_MD_CTX_free> digest(EVP_MD_CTX_new());
            require(EVP_DigestVerifyInit(digest.get(), nullptr, EVP_sha256(), nullptr,
                                         key_.get()) == 1 &&
                    EVP_DigestVerify(digest.get(), signature_.data(), signature_.size(),
                                     message_.data(), message_.size()) == 1);
        }
    }

  private:
    Bytes message_ = Bytes(700, 0x17);
    Bytes signature_ = Key::rsa(0).sign(message_);
    Owned<EVP_PKEY, EVP_PKEY_free> key_;
};

// ---- Benchmarks ----

void verdict_and_three_bare_verifications(benchmark::State& state) {
    const ThreeBareVerifications bare;
    side_by_side(
        state, 1.5, 50, [] { call_export(small_crl()); }, [&] { bare.verify(); });
}
BENCHMARK(verdict_and_three_bare_verifications)
    ->UseManualTime()
    ->Iterations(200)
    ->Unit(benchmark::kMicrosecond);

void verdict_and_openssl(benchmark::State& state) {
    side_by_side(
        state, 0.5, 50, [] { call_export(small_crl()); }, [] { call_openssl(small_crl()); });
}
BENCHMARK(verdict_and_openssl)->UseManualTime()->Iterations(200)->Unit(benchmark::kMicrosecond);

/// A CRL ten times as long costs at most ten times as much, but for what caches no longer hold.
void verdict_by_size_of_the_crl(benchmark::State& state) {
    constexpr std::uint32_t entries = 50'000;
    const Bytes shorter = crl_of(entries);
    const Bytes longer = crl_of(10 * entries);
    side_by_side(
        state, 12, 1, [&] { call_export(longer); }, [&] { call_export(shorter); });
    state.counters["ns_per_entry"] = state.counters["ours_us"] * 1e3 / (10 * entries);
}
BENCHMARK(verdict_by_size_of_the_crl)
    ->UseManualTime()
    ->Iterations(20)
    ->Unit(benchmark::kMillisecond);

void verdict_in_two_threads(benchmark::State& state) {
    const ThreeBareVerifications verifications;
    Rate ours(500);
    Rate bare(500);
    for ([[maybe_unused]] auto iteration : state) {
        state.SetIterationTime(bare.measure([&] { return [&] { verifications.verify(); }; }) +
                               ours.measure([] { return [] { call_export(small_crl()); }; }));
    }
    state.counters["rate"] = ours.rate();
    state.counters["reference_rate"] = bare.rate();
    state.counters["wanted"] = 1.9;
}
BENCHMARK(verdict_in_two_threads)->UseManualTime()->Iterations(20)->Unit(benchmark::kMillisecond);

/// Stands last: the roots that it adds remain.
void verdict_by_number_of_roots(benchmark::State& state) {
    constexpr int others = 2000;
    std::vector<double> times[2];
    const auto measure = [&](std::vector<double>& into) {
        for (int i = 0; i < 50; ++i) {
            into.push_back(seconds([] { call_export(small_crl()); }, 50));
        }
    };
    for ([[maybe_unused]] auto iteration : state) {
        measure(times[0]);
        for (int number = 0; number < others; ++number) {
            const std::string name = "Other " + std::to_string(number);
            system_stores.add_root(
                name, ca_certificate(name, Key::rsa(2), Bytes(name.begin(), name.end())));
        }
        // A store is looked at again after a second, and read when it is next opened.
        std::this_thread::sleep_for(std::chrono::seconds(2));
        call_export(small_crl());
        measure(times[1]);
        state.SetIterationTime(median(times[1]));
    }
    state.counters["with_one_us"] = median(times[0]) * 1e6;
    state.counters["with_2001_us"] = median(times[1]) * 1e6;
    state.counters["ratio"] = median(times[1]) / median(times[0]);
    state.counters["limit"] = 1.1;
}
BENCHMARK(verdict_by_number_of_roots)
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace norvane::bench
