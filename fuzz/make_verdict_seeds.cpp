// Writes the inputs that the fuzzer of verdicts starts from: make_verdict_seeds FOLDER. They are
// the same every time; the signatures are of the kind that the fuzzer makes up.

#include "VerdictInput.h"
#include "support/CertificateBuilder.h"
#include "support/CrlBuilder.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>

using namespace norvane::testing;
using norvane::VerdictObject;

namespace {

const Bytes algorithm = sequence(oid("1.2.840.113549.1.1.11"), null());

/// The key that makes the signatures which begin with `id`.
Bytes key(std::uint8_t id) {
    return sequence(sequence(oid("1.2.840.113549.1.1.1"), null()), bit_string({id}));
}
Bytes signed_by(std::uint8_t id, const Bytes& tbs) {
    return sequence(tbs, algorithm, bit_string({id}));
}

struct Certificate {
    std::string issuer;
    std::uint8_t signer;
    std::string subject;
    std::uint8_t key_id;
    Holder holder = Holder::ca;
    std::vector<Bytes> more = {};

    operator Bytes() const {
        std::vector<Bytes> extensions{
            basic_constraints(holder),
            key_usage(named_bits({digital_signature, key_cert_sign, crl_sign})),
            subject_key_identifier({key_id}), authority_key_identifier(Bytes{signer})};
        extensions.insert(extensions.end(), more.begin(), more.end());
        const CertificateBuilder builder{.serial = {key_id},
                                         .issuer = common_name(issuer),
                                         .subject = common_name(subject),
                                         .spki = key(key_id),
                                         .extensions = extensions};
        return signed_by(signer, builder.tbs(algorithm));
    }
};

Bytes crl(const std::string& issuer, std::uint8_t signer, int number,
          const std::vector<CrlEntry>& entries = {}, const std::vector<Bytes>& more = {}) {
    std::vector<Bytes> extensions{authority_key_identifier(Bytes{signer}),
                                  crl_number(integer(number))};
    extensions.insert(extensions.end(), more.begin(), more.end());
    return signed_by(
        signer,
        CrlBuilder{.issuer = common_name(issuer), .entries = entries, .extensions = extensions}.tbs(
            algorithm));
}

class Seed {
  public:
    explicit Seed(unsigned modes) : bytes_{static_cast<std::uint8_t>(modes)} {}
    Seed& add(VerdictObject kind, const Bytes& object) {
        append(bytes_, Bytes{static_cast<std::uint8_t>(kind),
                             static_cast<std::uint8_t>(object.size() & 0xFF),
                             static_cast<std::uint8_t>(object.size() >> 8)});
        append(bytes_, object);
        return *this;
    }
    void write(const std::filesystem::path& file) const {
        std::ofstream out(file, std::ios::binary);
        out.write(reinterpret_cast<const char*>(bytes_.data()),
                  static_cast<std::streamsize>(bytes_.size()));
        if (!out.flush()) {
            throw std::runtime_error("cannot write " + file.string());
        }
    }

  private:
    Bytes bytes_;
};

constexpr unsigned usual_modes = norvane::verdict_with_crl_store | norvane::verdict_with_crl_info;

void write_seeds(const std::filesystem::path& folder) {
    using enum VerdictObject;
    const Certificate root_certificate{"Root", 1, "Root", 1};
    const Certificate ca{"Root", 1, "CA", 2};
    const std::vector<Bytes> with_points{
        crl_distribution_points({{.full_name = {url("http://a/c")}, .reasons = named_bits({1, 2})},
                                 {.full_name = {url("ldap://b/d")}}}),
        authority_info_access({"http://a/i"})};
    const Certificate leaf{"CA", 2, "Leaf", 3, Holder::end_entity};
    const Certificate leaf_with_points{"CA", 2, "Leaf", 3, Holder::end_entity, with_points};
    const Bytes fresh = freshest_crl({{.full_name = {url("http://a/f")}}});
    const Certificate fresh_leaf{"CA", 2, "Leaf", 3, Holder::end_entity, {fresh}};
    const CrlEntry entry{.serial = {3}, .extensions = {reason_code(4)}};
    const CrlEntry removal{.serial = {3}, .extensions = {reason_code(8)}};
    const Bytes root_crl = crl("Root", 1, 5);
    const auto usual = [&](const Bytes& subject_bytes, unsigned modes = usual_modes) {
        return Seed(modes)
            .add(subject, subject_bytes)
            .add(root, root_certificate)
            .add(caller_certificate, ca)
            .add(caller_crl, root_crl);
    };
    std::filesystem::create_directories(folder);
    usual(leaf).add(caller_crl, crl("CA", 2, 1)).write(folder / "good");
    usual(leaf).add(caller_crl, crl("CA", 2, 1, {entry})).write(folder / "revoked");
    usual(fresh_leaf)
        .add(caller_crl, crl("CA", 2, 4, {entry}, {fresh}))
        .add(caller_crl, crl("CA", 2, 6, {removal}, {delta_crl_indicator(integer(3))}))
        .write(folder / "removed-by-delta");
    Seed(norvane::verdict_accumulative | norvane::verdict_with_crl_info |
         norvane::verdict_nothing_cached)
        .add(subject, leaf_with_points)
        .add(root, root_certificate)
        .add(ca_crl, root_crl)
        .add(served_certificate, ca)
        .add(served_crl, crl("CA", 2, 1, {},
                             {issuing_distribution_point(
                                 {.full_name = {url("http://a/c")},
                                  .only_some_reasons = named_bits({1, 2, 3, 4, 5, 6})})}))
        .add(served_crl, crl("CA", 2, 2, {}, {ca_version(integer(1)), crl_kind(1)}))
        .write(folder / "retrieved");
    Seed(norvane::verdict_cache_only | norvane::verdict_with_crl_store)
        .add(issuer_hint, ca)
        .add(subject, leaf)
        .add(subject, ca)
        .add(root, root_certificate)
        .add(caller_crl, root_crl)
        .add(caller_crl, crl("CA", 2, 1, {}, {issuing_distribution_point({.indirect = true})}))
        .write(folder / "two-subjects");
    // Each signs the other's CRLs.
    usual(leaf)
        .add(ca_certificate, Certificate{"Root", 1, "Other", 4})
        .add(caller_crl, crl("CA", 4, 1))
        .add(caller_crl, crl("Root", 2, 6))
        .write(folder / "ring");
    // Each has issued the other.
    usual(leaf, norvane::verdict_without_parameters)
        .add(ca_certificate, Certificate{"Other", 4, "CA", 2})
        .add(ca_certificate, Certificate{"CA", 2, "Other", 4})
        .add(ca_crl, crl("CA", 2, 1))
        .write(folder / "cross-certified");
}

} // namespace

int main(int argc, char** argv) {
    try {
        if (argc != 2) {
            throw std::runtime_error("usage: make_verdict_seeds FOLDER");
        }
        write_seeds(argv[1]);
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "make_verdict_seeds: %s\n", fault.what());
        return 1;
    }
    return 0;
}
