// Writes the inputs that the fuzzers of the ASN.1 runtime start from: make_seeds FOLDER puts them
// into FOLDER/asn1_fuzzer and FOLDER/asn1_compare_fuzzer. They are the same every time.

#include "Asn1Check.h"
#include "asn1/Material.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>

using namespace norvane::testing;

namespace {

class SeedWriter {
  public:
    explicit SeedWriter(std::filesystem::path folder) : folder_(std::move(folder)) {}

    /// One of the two signed structures, for both fuzzers.
    void add_signed(const std::string& name, Asn1Check check, const Bytes& element) const {
        write("asn1_compare_fuzzer", name, element);
        add(name, check, element);
    }
    void add(const std::string& name, Asn1Check check, const Bytes& input) const {
        write("asn1_fuzzer", name, cat(Bytes{static_cast<std::uint8_t>(check)}, input));
    }

  private:
    void write(const char* fuzzer, const std::string& name, const Bytes& input) const {
        const std::filesystem::path path = folder_ / fuzzer / name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream file(path, std::ios::binary);
        file.write(reinterpret_cast<const char*>(input.data()),
                   static_cast<std::streamsize>(input.size()));
        if (!file.flush()) {
            throw std::runtime_error("cannot write " + path.string());
        }
    }

    std::filesystem::path folder_;
};

/// The tbs part of a certificate or CRL whose three lengths all take two octets behind the first.
Bytes tbs_of(const Bytes& signed_structure) {
    const std::size_t length = signed_structure[6] * 256U + signed_structure[7];
    return {signed_structure.begin() + 4,
            signed_structure.begin() + static_cast<std::ptrdiff_t>(8 + length)};
}

Bytes in_segments(int tag, const Bytes& content) {
    const auto middle = content.begin() + static_cast<std::ptrdiff_t>(content.size() / 2);
    return ber_segments(tag, {octet_string({content.begin(), middle}),
                              ber_indefinite(0x24, octet_string({middle, content.end()}))});
}

void add_signed_structures(const SeedWriter& seeds) {
    const Bytes time = in_segments(0x17, text_bytes("260101000000Z"));
    const Bytes reason = sequence(oid("2.5.29.21"), in_segments(0x04, enumerated(4)));
    const Bytes usage = sequence(oid("2.5.29.15"), boolean(false),
                                 in_segments(0x04, ber_segments(0x03, {bit_string({0x06}, 1)})));
    const Bytes constraints =
        extension("2.5.29.19", Critical::no, ber_indefinite(0x30, cat(boolean(true), integer(0))));
    const Bytes algorithm = sequence(oid("1.2.840.113549.1.1.11"), null());
    const CertificateBuilder small{.signature_algorithm = algorithm,
                                   .spki = sequence(algorithm, bit_string({0}))};
    CertificateBuilder first = small;
    first.version = 0;
    CertificateBuilder segmented = small;
    segmented.not_before = time;
    segmented.extensions = {usage, constraints, extension("2.5.29.14", Critical::no, null())};
    const CrlBuilder empty{.version = 0, .signature_algorithm = algorithm, .next_update = {}};
    CrlBuilder odd{.signature_algorithm = algorithm,
                   .this_update = time,
                   .entries = {{.serial = {1}, .date = time, .extensions = {reason, reason}},
                               {.serial = {2}},
                               {.serial = {3}, .extensions = {reason}}}};

    const Bytes typical = typical_certificate();
    const struct {
        const char* name;
        Asn1Check check;
        Bytes element;
    } rows[] = {
        {"certificate-typical", Asn1Check::certificate, typical},
        {"certificate-full", Asn1Check::certificate, full_certificate()},
        {"certificate-v1", Asn1Check::certificate, with_signature(first.tbs(algorithm))},
        {"certificate-segmented", Asn1Check::certificate, with_signature(segmented.tbs(algorithm))},
        {"certificate-indefinite", Asn1Check::certificate, to_indefinite(full_certificate())},
        {"certificate-long-length", Asn1Check::certificate,
         ber_long_length(0x30, {typical.begin() + 4, typical.end()}, 9)},
        {"crl-full", Asn1Check::certificate_list, full_crl()},
        {"crl-v1-empty", Asn1Check::certificate_list, with_signature(empty.tbs(algorithm))},
        {"crl-segmented", Asn1Check::certificate_list, with_signature(odd.tbs(algorithm))},
        {"crl-indefinite", Asn1Check::certificate_list, to_indefinite(full_crl())},
    };
    for (const auto& [name, check, element] : rows) {
        seeds.add_signed(name, check, element);
    }
    seeds.add("tbs-certificate", Asn1Check::tbs_certificate, tbs_of(full_certificate()));
    seeds.add("tbs-cert-list", Asn1Check::tbs_cert_list, tbs_of(full_crl()));
}

void add_parts(const SeedWriter& seeds) {
    const std::vector<Bytes> certificate = certificate_extensions();
    const std::vector<Bytes> crl = crl_extensions();
    const struct {
        const char* name;
        Asn1Check check;
        Bytes element;
    } rows[] = {
        {"name-varied", Asn1Check::name, varied_name()},
        {"name-indefinite", Asn1Check::name, to_indefinite(common_name("A"))},
        {"general-names", Asn1Check::general_names, sequence(all_general_names())},
        {"point-name-full", Asn1Check::distribution_point_name, context(0, all_general_names())},
        {"point-name-relative", Asn1Check::distribution_point_name,
         context(1, sequence(oid("2.5.4.3"), utf8("A")))},
        {"subject-key-identifier", Asn1Check::subject_key_identifier, value_of(certificate[0])},
        {"authority-key-identifier", Asn1Check::authority_key_identifier, value_of(certificate[1])},
        {"key-usage", Asn1Check::key_usage, value_of(certificate[2])},
        {"ext-key-usage", Asn1Check::ext_key_usage, value_of(certificate[3])},
        {"basic-constraints", Asn1Check::basic_constraints, value_of(certificate[4])},
        {"crl-distribution-points", Asn1Check::crl_distribution_points, value_of(certificate[5])},
        {"authority-info-access", Asn1Check::authority_info_access, value_of(certificate[7])},
        {"crl-number", Asn1Check::crl_number, value_of(crl[1])},
        {"issuing-distribution-point", Asn1Check::issuing_distribution_point, value_of(crl[4])},
        {"crl-reason", Asn1Check::crl_reason, enumerated(8)},
        {"object-identifier", Asn1Check::object_identifier, hex("2a8648 8fffffff7f 883703")},
        {"string-utf8", Asn1Check::character_string, utf8("A\u0416\u20ac\U0001f600")},
        {"string-bmp", Asn1Check::character_string, bmp(u"\u0416")},
        {"string-universal", Asn1Check::character_string, tlv(0x1c, hex("0001f600"))},
        {"string-segments", Asn1Check::character_string, in_segments(0x16, text_bytes("text"))},
        {"lengths-indefinite", Asn1Check::minimal_lengths, to_indefinite(crl[4])},
        {"lengths-long", Asn1Check::minimal_lengths, ber_long_length(0x30, certificate[0], 5)},
        {"lengths-high-tag", Asn1Check::minimal_lengths, hex("bf8f1f 80 1f1f8100 0000")},
    };
    for (const auto& [name, check, element] : rows) {
        seeds.add(name, check, element);
    }
}

void add_texts(const SeedWriter& seeds) {
    const struct {
        const char* name;
        Asn1Check check;
        const char* text;
    } rows[] = {
        {"utc-time-first", Asn1Check::utc_time, "500101000000Z"},
        {"utc-time-no-seconds", Asn1Check::utc_time, "4912312359Z"},
        {"utc-time-zone", Asn1Check::utc_time, "491231235959-0130"},
        {"generalized-time", Asn1Check::generalized_time, "20240229123456Z"},
        {"generalized-time-no-minutes", Asn1Check::generalized_time, "2026010100+2359"},
        {"generalized-time-fraction", Asn1Check::generalized_time, "20260101000000.125Z"},
        {"integer-encoded", Asn1Check::integer_text, "0x00ff"},
        {"integer-negative", Asn1Check::integer_text, "-0x80"},
        {"integer-octal", Asn1Check::integer_text, "-00777"},
        {"integer-decimal", Asn1Check::integer_text, "+18446744073709551616"},
    };
    for (const auto& [name, check, text] : rows) {
        seeds.add(name, check, text_bytes(text));
    }
}

} // namespace

int main(int argc, char** argv) {
    try {
        if (argc != 2) {
            throw std::runtime_error("usage: make_seeds FOLDER");
        }
        const SeedWriter seeds(argv[1]);
        add_signed_structures(seeds);
        add_parts(seeds);
        add_texts(seeds);
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "make_seeds: %s\n", fault.what());
        return 1;
    }
    return 0;
}
