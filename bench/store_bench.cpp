#include "Material.h"
#include "SideBySide.h"
#include "asn1/CertificateList.h"
#include "asn1/Decode.h"
#include "support/AllocationCounter.h"
#include "support/TemporaryFolder.h"

#include <norvane/wincrypt.h>

#include <benchmark/benchmark.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace norvane::bench {
namespace {

constexpr int root_count = 150;

/// A system store of as many certificates as a distribution's bundle has, one to a file. It has a
/// name of its own, since other benchmarks of the process have another "Root".
class Roots {
  public:
    Roots() {
        if (!NorvaneSetConfiguration("stores", "Bundle", (folder_.path() / "Root").c_str())) {
            throw std::runtime_error("the store is not configured");
        }
    }

    void write_files() const {
        for (int i = 0; i < root_count; ++i) {
            const std::string name = "root" + std::to_string(i);
            const Bytes key_id{static_cast<std::uint8_t>(i)};
            const Bytes encoded = testing::CertificateBuilder{
                .subject = testing::common_name(name),
                .extensions = {testing::subject_key_identifier(
                    key_id)}}.sign(testing::Key::ec(0));
            static_cast<void>(folder_.write(
                "Root/" + name, {reinterpret_cast<const char*>(encoded.data()), encoded.size()}));
        }
    }

  private:
    testing::TemporaryFolder folder_;
};

/// Made before any benchmark asks for the configuration, which is read but once.
const Roots roots;

HCERTSTORE open_root() {
    static const bool written = [] {
        roots.write_files();
        return true;
    }();
    HCERTSTORE store = CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, 0x1C000, NORVANE_W("Bundle"));
    if (!written || store == nullptr) {
        throw std::runtime_error("the store does not open");
    }
    return store;
}

/// The limit is 2 microseconds, the looks at the files once a second included.
void open_root_of_150_again(benchmark::State& state) {
    CertCloseStore(open_root(), 0);
    for ([[maybe_unused]] auto iteration : state) {
        CertCloseStore(open_root(), 0);
    }
    state.counters["limit_us"] = 2;
}
BENCHMARK(open_root_of_150_again)->MinTime(3)->Unit(benchmark::kMicrosecond);

void walk_through_150_roots(benchmark::State& state) {
    HCERTSTORE store = open_root();
    int count = 0;
    for ([[maybe_unused]] auto iteration : state) {
        count = 0;
        PCCERT_CONTEXT context = nullptr;
        while ((context = CertEnumCertificatesInStore(store, context)) != nullptr) {
            ++count;
        }
    }
    CertCloseStore(store, 0);
    state.counters["certificates"] = count;
}
BENCHMARK(walk_through_150_roots)->Unit(benchmark::kMicrosecond);

void find_root_by_key_identifier(benchmark::State& state) {
    HCERTSTORE store = open_root();
    BYTE key_id = root_count - 1;
    const CRYPT_HASH_BLOB identifier{1, &key_id};
    for ([[maybe_unused]] auto iteration : state) {
        PCCERT_CONTEXT found = CertFindCertificateInStore(
            store, X509_ASN_ENCODING, 0, CERT_FIND_KEY_IDENTIFIER, &identifier, nullptr);
        if (found == nullptr) {
            throw std::runtime_error("the root is not found");
        }
        CertFreeCertificateContext(found);
    }
    CertCloseStore(store, 0);
}
BENCHMARK(find_root_by_key_identifier)->Unit(benchmark::kNanosecond);

/// A search for a number that is not listed, beside the runtime's own walk over the entries.
void find_certificate_in_crl_of_a_million(benchmark::State& state) {
    const Bytes& encoded = large_crl();
    const auto crl_length = static_cast<DWORD>(encoded.size());
    const Bytes subject =
        testing::CertificateBuilder{.serial = testing::large_crl_serial(large_crl_entries)}.sign(
            testing::Key::ec(0));
    PCCRL_CONTEXT crl = CertCreateCRLContext(X509_ASN_ENCODING, encoded.data(), crl_length);
    PCCERT_CONTEXT certificate = CertCreateCertificateContext(X509_ASN_ENCODING, subject.data(),
                                                              static_cast<DWORD>(subject.size()));
    ASN1CTXT ctxt;
    ASN1T_CertificateList list;
    if (decode_element(ctxt, view(encoded), list) < 0) {
        throw std::runtime_error("the CRL does not decode");
    }
    const Bytes serial = testing::large_crl_serial(large_crl_entries);
    side_by_side(
        state, 1.1, 1,
        [&] {
            CRL_ENTRY* entry = nullptr;
            if (!CertFindCertificateInCRL(certificate, crl, 0, nullptr, &entry) ||
                entry != nullptr) {
                throw std::runtime_error("found a serial number that is not listed");
            }
        },
        [&] {
            for (const ASN1T_RevokedCertificate& entry : list.tbsCertList.revokedCertificates) {
                if (entry.userCertificate.content() == view(serial)) {
                    throw std::runtime_error("found a serial number that is not listed");
                }
            }
        });
    CertFreeCertificateContext(certificate);
    CertFreeCRLContext(crl);
}
BENCHMARK(find_certificate_in_crl_of_a_million)
    ->UseManualTime()
    ->Iterations(15)
    ->Unit(benchmark::kMillisecond);

/// A context over bytes that are known already, beside one SHA-256 pass over them.
void create_crl_context_again(benchmark::State& state) {
    const Bytes& encoded = large_crl();
    const auto create = [&] {
        return CertCreateCRLContext(X509_ASN_ENCODING, encoded.data(),
                                    static_cast<DWORD>(encoded.size()));
    };
    PCCRL_CONTEXT first = create();
    side_by_side(
        state, 1, 1, [&] { CertFreeCRLContext(create()); }, [&] { sha256(encoded); });
    CertFreeCRLContext(first);
}
BENCHMARK(create_crl_context_again)->UseManualTime()->Iterations(15)->Unit(benchmark::kMillisecond);

/// Bytes allocated for an empty store, the growth of the table of handles included.
void open_empty_stores(benchmark::State& state) {
    constexpr int count = 10'000;
    std::vector<HCERTSTORE> stores(count);
    for ([[maybe_unused]] auto iteration : state) {
        const testing::AllocationCounter counter;
        for (HCERTSTORE& store : stores) {
            store = CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr);
        }
        state.counters["bytes_each"] = static_cast<double>(counter.peak()) / count;
        for (HCERTSTORE store : stores) {
            CertCloseStore(store, 0);
        }
    }
}
BENCHMARK(open_empty_stores)->Iterations(3)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace norvane::bench
