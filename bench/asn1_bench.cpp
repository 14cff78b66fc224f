#include "Material.h"
#include "SideBySide.h"
#include "asn1/ControlClass.h"
#include "support/AllocationCounter.h"

#include <openssl/x509.h>

#include <memory>

namespace norvane::bench {
namespace {

using testing::AllocationCounter;

/// A structure decoded from bytes that it views.
template <class T>
struct Decoded {
    explicit Decoded(ByteView bytes) : buffer(bytes.data, bytes.length) {
        ASN1C<T> control(buffer, value);
        if (control.DecodeFrom(buffer) < 0) {
            throw std::runtime_error(rtErrGetText(buffer.getCtxt()));
        }
    }

    ASN1BERDecodeBuffer buffer;
    T value;
};

void decode_crl_of_a_million_entries(benchmark::State& state) {
    const Bytes& crl = large_crl();
    side_by_side(
        state, 0.6, 1,
        [&] {
            const Decoded<ASN1T_CertificateList> list(view(crl));
            benchmark::DoNotOptimize(list.value.tbsCertList.revokedCertificates.count);
        },
        [&] { sha256(crl); });
    const AllocationCounter counter;
    const Decoded<ASN1T_CertificateList> list(view(crl));
    state.counters["allocations"] = static_cast<double>(counter.count());
    state.counters["peak_bytes"] = static_cast<double>(counter.peak());
}
BENCHMARK(decode_crl_of_a_million_entries)
    ->UseManualTime()
    ->Iterations(15)
    ->Unit(benchmark::kMillisecond);

void walk_over_a_million_entries(benchmark::State& state) {
    const Bytes& crl = large_crl();
    const Decoded<ASN1T_CertificateList> list(view(crl));
    const Bytes absent = testing::large_crl_serial(large_crl_entries);
    side_by_side(
        state, 0.5, 1,
        [&] {
            std::size_t found = 0;
            for (const auto& entry : list.value.tbsCertList.revokedCertificates) {
                if (entry.userCertificate.content() == view(absent)) {
                    ++found;
                }
            }
            benchmark::DoNotOptimize(found);
        },
        [&] { sha256(crl); });
}
BENCHMARK(walk_over_a_million_entries)
    ->UseManualTime()
    ->Iterations(15)
    ->Unit(benchmark::kMillisecond);

/// The limit is 3 microseconds; the ratio to libcrypto's d2i_X509 is for information.
void decode_certificate(benchmark::State& state) {
    const Bytes certificate = typical_certificate();
    side_by_side(
        state, 1, 100,
        [&] {
            const Decoded<ASN1T_Certificate> decoded(view(certificate));
            benchmark::DoNotOptimize(decoded.value.encoding.data);
        },
        [&] {
            const unsigned char* bytes = certificate.data();
            const std::unique_ptr<X509, decltype(&X509_free)> x509(
                d2i_X509(nullptr, &bytes, static_cast<long>(certificate.size())), X509_free);
            benchmark::DoNotOptimize(x509.get());
        });
    const AllocationCounter counter;
    const Decoded<ASN1T_Certificate> decoded(view(certificate));
    state.counters["allocations"] = static_cast<double>(counter.count());
    state.counters["octets"] = static_cast<double>(certificate.size());
}
BENCHMARK(decode_certificate)->UseManualTime()->Iterations(300)->Unit(benchmark::kMicrosecond);

/// Encoding what was decoded from DER hands out the bytes; the limit is 1 microsecond. A copy of
/// the same bytes stands beside it.
template <class T, class Tbs>
void encode_tbs(benchmark::State& state, const Bytes& encoded, Tbs T::*tbs, int repeat) {
    Decoded<T> decoded(view(encoded));
    Bytes copy(encoded.size());
    side_by_side(
        state, 1, repeat,
        [&] {
            ASN1BEREncodeBuffer out;
            benchmark::DoNotOptimize(ASN1C<Tbs>(out, decoded.value.*tbs).EncodeTo(out));
            benchmark::DoNotOptimize(out.getMsgPtr());
        },
        [&] {
            std::memcpy(copy.data(), encoded.data(), encoded.size());
            benchmark::DoNotOptimize(copy.data());
        });
}
void encode_tbs_certificate(benchmark::State& state) {
    encode_tbs(state, typical_certificate(), &ASN1T_Certificate::tbsCertificate, 1000);
}
void encode_tbs_cert_list_of_a_million_entries(benchmark::State& state) {
    encode_tbs(state, large_crl(), &ASN1T_CertificateList::tbsCertList, 10);
}
BENCHMARK(encode_tbs_certificate)->UseManualTime()->Iterations(100)->Unit(benchmark::kMicrosecond);
BENCHMARK(encode_tbs_cert_list_of_a_million_entries)
    ->UseManualTime()
    ->Iterations(10)
    ->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace norvane::bench
