#include "Material.h"
#include "SideBySide.h"
#include "items/ChainBase.h"
#include "support/AllocationCounter.h"

#include <openssl/x509.h>

#include <memory>
#include <stdexcept>

namespace norvane::bench {
namespace {

using testing::AllocationCounter;

CACMPT_BLOB blob(const Bytes& bytes) {
    return {bytes.data(), static_cast<std::uint32_t>(bytes.size())};
}

void find_entry_reason_in_a_million(benchmark::State& state) {
    const Bytes& crl = large_crl();
    const CRLItem item(blob(crl));
    const Bytes absent = testing::large_crl_serial(large_crl_entries);
    const std::string serial = ASN1TInteger(view(absent)).text();
    static_cast<void>(item.decoded());
    side_by_side(
        state, 0.5, 1,
        [&] {
            if (item.find_entry_reason(serial) != entry_not_found) {
                throw std::runtime_error("found a serial number that is not listed");
            }
        },
        [&] { sha256(crl); });
}
BENCHMARK(find_entry_reason_in_a_million)
    ->UseManualTime()
    ->Iterations(15)
    ->Unit(benchmark::kMillisecond);

/// The limit is 1 microsecond. libcrypto makes its own comparison form when it decodes a name.
void canonical_name_of_five_rdns(benchmark::State& state) {
    const Bytes name = five_rdn_name();
    const CACMPT_BLOB encoded = blob(name);
    side_by_side(
        state, 1, 1000, [&] { benchmark::DoNotOptimize(canonical_name(encoded).data); },
        [&] {
            const unsigned char* bytes = name.data();
            const std::unique_ptr<X509_NAME, decltype(&X509_NAME_free)> decoded(
                d2i_X509_NAME(nullptr, &bytes, static_cast<long>(name.size())), X509_NAME_free);
            benchmark::DoNotOptimize(decoded.get());
        });
}
BENCHMARK(canonical_name_of_five_rdns)
    ->UseManualTime()
    ->Iterations(100)
    ->Unit(benchmark::kMicrosecond);

/// Bytes allocated, as a multiple of the CRL's length, when a CRL enters a cache: once when it is
/// new, not at all when it is known. The time of the latter beside one SHA-256 pass.
void enter_large_crl_into_the_cache(benchmark::State& state) {
    const Bytes& crl = large_crl();
    CrlItemCache cache;
    const AllocationCounter entering_new;
    cache_crl(cache, view(crl), {});
    const auto copies_when_new = entering_new.bytes();
    const AllocationCounter entering_known;
    side_by_side(
        state, 1, 1, [&] { benchmark::DoNotOptimize(&cache_crl(cache, view(crl), {})); },
        [&] { sha256(crl); });
    const auto length = static_cast<double>(crl.size());
    state.counters["copies_new"] = static_cast<double>(copies_when_new) / length;
    state.counters["copies_known"] = static_cast<double>(entering_known.bytes()) / length;
}
BENCHMARK(enter_large_crl_into_the_cache)
    ->UseManualTime()
    ->Iterations(15)
    ->Unit(benchmark::kMillisecond);

} // namespace
} // namespace norvane::bench
