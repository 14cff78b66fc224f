// What our own module does with material that would keep a search without bounds busy for ever.
#include "Dispatch.h"

#include <ctime>
#include <iostream>

namespace {

using namespace norvane::testing;

constexpr Outcome good{TRUE, 0, ERROR_SUCCESS};
constexpr Outcome not_checked{FALSE, 0, CRYPT_E_NO_REVOCATION_CHECK};

// A certificate of a CA, whose key has the identifier `key_id`.
Bytes ca_certificate(const std::string& issuer, const Key& issuer_key, const std::string& subject,
                     const Key& key, const Bytes& key_id, int serial = 1) {
    return CertificateBuilder{.serial = integer_content(serial),
                              .issuer = common_name(issuer),
                              .subject = common_name(subject),
                              .spki = key.spki(),
                              .extensions = {basic_constraints(Holder::ca),
                                             key_usage(named_bits({key_cert_sign, crl_sign})),
                                             subject_key_identifier(key_id)}}
        .sign(issuer_key);
}

Bytes crl_by(const std::string& issuer, const Key& key, const Bytes& key_id) {
    return CrlBuilder{.issuer = common_name(issuer),
                      .extensions = {authority_key_identifier(key_id)}}
        .sign(key);
}

// Runs `checks` where our own module answers and trusts these certificates.
[[nodiscard]] auto with_own_module(const std::vector<Bytes>& roots,
                                   const std::function<void()>& checks,
                                   const std::string& limits = "") {
    const TemporaryFolder folder;
    std::string files;
    for (const Bytes& root : roots) {
        const auto file =
            folder.write(std::to_string(files.size()), std::string(root.begin(), root.end()));
        files += (files.empty() ? "" : ":") + file.string();
    }
    return with_modules(OWN_MODULE, checks, "[stores]\nCA =\nRoot = " + files + "\n" + limits);
}

// Where sanitizers slow everything down a tenth of the default quotas must do.
#ifdef NDEBUG
const std::string search_limits;
#else
const std::string search_limits =
    "[limits]\nsignature_verifications = 1000\nshown_objects = 500000\n";
#endif

struct Material {
    OpenStore certificates = OpenStore::memory();
    OpenStore crls = OpenStore::memory();

    [[nodiscard]] Outcome check(const Bytes& certificate) const {
        HCERTSTORE store = certificates.get();
        CERT_REVOCATION_PARA para{};
        para.cbSize = sizeof para;
        para.cCertStore = 1;
        para.rgCertStore = &store;
        para.hCrlStore = crls.get();
        Outcome outcome = ask({certificate_context(certificate).get()}, 0, &para);
        outcome.freshness = 0;
        return outcome;
    }
};

} // namespace

TEST(HostileMaterial, CasThatSignEachOthersCrlsEndWithAVerdict) {
    constexpr std::size_t most = 20;
    std::vector<Bytes> roots;
    const Bytes root_key_id{0xAA};
    const auto root_name = [](std::size_t number) { return "Root " + std::to_string(number); };
    for (std::size_t number = 0; number < most; ++number) {
        roots.push_back(ca_certificate(root_name(number), Key::ec(0), root_name(number), Key::ec(0),
                                       root_key_id));
    }
    enum class Shape { row, ring };
    // Of each CA the next one signs the CRL, and of the last one its own root, or the first CA.
    const auto outcome = [&](std::size_t length, Shape shape) {
        const Material material;
        std::vector<Bytes> cas;
        for (std::size_t number = 0; number < length; ++number) {
            cas.push_back(ca_certificate(root_name(number), Key::ec(0), "CA", Key::ec(number + 1),
                                         {static_cast<std::uint8_t>(number)}));
            material.certificates.add(cas.back());
            const std::size_t next = (number + 1) % length;
            material.crls.add_crl(next == 0 && shape == Shape::row
                                      ? crl_by(root_name(number), Key::ec(0), root_key_id)
                                      : crl_by(root_name(number), Key::ec(next + 1),
                                               {static_cast<std::uint8_t>(next)}));
        }
        return material.check(cas.front());
    };
    EXPECT_TRUE(with_own_module(
        roots,
        [&] {
            for (const std::size_t length :
                 {std::size_t{1}, std::size_t{2}, std::size_t{3}, most}) {
                EXPECT_EQ(outcome(length, Shape::row), good) << length;
                EXPECT_EQ(outcome(length, Shape::ring), not_checked) << length;
            }
        },
        search_limits));
}

TEST(HostileMaterial, AThousandCrossCertifiedCasEndWithinTheQuota) {
    const Bytes root = ca_certificate("Root", Key::ec(0), "Root", Key::ec(0), {0xAA});
    EXPECT_TRUE(with_own_module(
        {root},
        [] {
            constexpr int cas = 1000;
            const Material material;
            // Half of them are A by B, and half B by A, so each may follow each of the other half.
            for (int number = 1; number <= cas; ++number) {
                const bool odd = number % 2 != 0;
                material.certificates.add(
                    odd ? ca_certificate("B", Key::rsa(1), "A", Key::rsa(0), {0x0A}, number)
                        : ca_certificate("A", Key::rsa(0), "B", Key::rsa(1), {0x0B}, number));
            }
            material.crls.add_crl(CrlBuilder{.issuer = common_name("A")}.sign(Key::rsa(0)));
            const Bytes leaf = CertificateBuilder{.issuer = common_name("A")}.sign(Key::rsa(0));
            const std::clock_t start = std::clock();
            EXPECT_EQ(material.check(leaf), not_checked);
            std::cout << static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC << " seconds\n";
        },
        search_limits));
}

#ifdef __SANITIZE_ADDRESS__ // Each frame is several times as large there.
constexpr int cas_of_a_long_path = 2000;
#else
constexpr int cas_of_a_long_path = 8000;
#endif

TEST(HostileMaterial, APathOfThousandsOfCasEndsWithinTheStack) {
    const Bytes root = ca_certificate("Root", Key::ec(0), "Root", Key::ec(0), {0xAA});
    EXPECT_TRUE(with_own_module({root}, [] {
        const Material material;
        const auto id = [](int number) { return integer_content(number); };
        const auto key = [](int number) { return Key::ec(number % 2 == 0 ? 1 : 2); };
        for (int number = 0; number < cas_of_a_long_path; ++number) {
            material.certificates.add(CertificateBuilder{
                .issuer = common_name("CA"),
                .subject = common_name("CA"),
                .spki = key(number).spki(),
                .extensions = {basic_constraints(Holder::ca), subject_key_identifier(id(number)),
                               authority_key_identifier(id(number + 1))}}
                                          .sign(key(number + 1)));
        }
        material.crls.add_crl(crl_by("CA", key(0), id(0)));
        const Bytes leaf = CertificateBuilder{.issuer = common_name("CA"),
                                              .extensions = {authority_key_identifier(id(0))}}
                               .sign(key(0));
        const std::clock_t start = std::clock();
        EXPECT_EQ(material.check(leaf), not_checked);
        std::cout << static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC << " seconds\n";
    }));
}
