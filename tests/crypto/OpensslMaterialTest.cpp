#include "OpensslCommand.h"
#include "items/CRLItem.h"
#include "items/CertificateItem.h"

#include <gtest/gtest.h>

namespace norvane {
namespace {

using testing::Bytes;
using testing::OpensslCommand;

CACMPT_BLOB blob(const Bytes& bytes) {
    return {bytes.data(), static_cast<std::uint32_t>(bytes.size())};
}

/// Whether the signature still verifies with the key after the bytes of `part`, which lies in
/// `whole`, were changed at one place.
template <class Item>
bool verifies_when_changed(const Bytes& whole, const std::uint8_t* octet, const std::uint8_t* start,
                           const ASN1T_SubjectPublicKeyInfo& key) {
    Bytes changed = whole;
    changed.at(static_cast<std::size_t>(octet - start)) ^= 0x01;
    return Item(blob(changed)).verify_with_key(key);
}

/// A key and a self-signed certificate: `made` says how, in arguments of openssl req.
struct Made {
    std::string name;
    std::string arguments;
};

std::vector<Made> all_kinds() {
    std::vector<Made> kinds;
    for (const char* hash : {"sha1", "sha256", "sha384", "sha512"}) {
        kinds.push_back({std::string("RSA ") + hash, std::string("-newkey rsa:2048 -") + hash});
        kinds.push_back({std::string("ECDSA ") + hash,
                         std::string("-newkey ec -pkeyopt ec_paramgen_curve:P-256 -") + hash});
        if (std::string(hash) < "sha3") {
            kinds.push_back(
                {std::string("DSA ") + hash, std::string("-newkey dsa:dsa.pem -") + hash});
        }
    }
    kinds.push_back({"RSA 1024", "-newkey rsa:1024"});
    kinds.push_back({"RSA 4096", "-newkey rsa:4096"});
    for (const char* curve :
         {"P-192", "P-224", "P-384", "P-521", "brainpoolP160r1", "brainpoolP192t1",
          "brainpoolP224r1", "brainpoolP256t1", "brainpoolP320r1", "brainpoolP384t1",
          "brainpoolP512r1", "brainpoolP512t1"}) {
        kinds.push_back({curve, std::string("-newkey ec -pkeyopt ec_paramgen_curve:") + curve});
    }
    const auto add_gost = [&kinds](const char* algorithm, const std::vector<const char*>& sets) {
        for (const char* set : sets) {
            kinds.push_back({std::string(algorithm) + " " + set,
                             std::string("-newkey ") + algorithm + " -pkeyopt paramset:" + set});
        }
    };
    add_gost("gost2001", {"0", "A", "B", "C", "XA", "XB"});
    add_gost("gost2012_256", {"0", "A", "B", "C", "XA", "XB", "TCA", "TCB", "TCC", "TCD"});
    add_gost("gost2012_512", {"A", "B", "C"});
    return kinds;
}

} // namespace

TEST(OpensslMaterial, VerifiesUnlessItWasChanged) {
    const OpensslCommand openssl;
    ASSERT_TRUE(openssl.run("dsaparam -out dsa.pem 2048"));
    for (const Made& made : all_kinds()) {
        SCOPED_TRACE(made.name);
        if (!openssl.run("req -x509 -nodes -keyout key.pem -out c.der -outform DER -subj /CN=a " +
                         made.arguments)) {
            continue;
        }
        const Bytes bytes = openssl.bytes("c.der");
        const CertificateItem item(blob(bytes));
        EXPECT_TRUE(item.is_self_signed());

        const ASN1T_Certificate& tree = *item.decoded();
        const auto& key = tree.tbsCertificate.subjectPublicKeyInfo;
        const std::uint8_t* const start = item.encoded().data;
        const ByteView serial = tree.tbsCertificate.serialNumber.content();
        const ByteView signature = tree.signature.octets();
        EXPECT_FALSE(verifies_when_changed<CertificateItem>(bytes, serial.end() - 1, start, key));
        for (const std::uint8_t* octet :
             {signature.begin(), signature.begin() + signature.length / 2, signature.end() - 1}) {
            EXPECT_FALSE(verifies_when_changed<CertificateItem>(bytes, octet, start, key));
        }
    }
}

TEST(OpensslMaterial, VerifiesWithTheKeyOfAnIssuerOfAnotherAlgorithmOnly) {
    const OpensslCommand openssl;
    const struct {
        const char* authority;
        const char* holder;
    } cases[] = {{"gost2012_256 -pkeyopt paramset:TCA", "rsa:2048"},
                 {"rsa:2048", "gost2012_512 -pkeyopt paramset:A"},
                 {"ec -pkeyopt ec_paramgen_curve:P-384", "gost2001 -pkeyopt paramset:A"}};
    for (const auto& test : cases) {
        SCOPED_TRACE(test.authority);
        ASSERT_TRUE(openssl.run(std::string("req -x509 -nodes -keyout a.key -out a.pem -subj /CN=a "
                                            "-newkey ") +
                                test.authority));
        ASSERT_TRUE(openssl.run("x509 -in a.pem -outform DER -out a.der"));
        ASSERT_TRUE(openssl.run(std::string("req -nodes -keyout b.key -out b.req -subj /CN=b "
                                            "-newkey ") +
                                test.holder));
        ASSERT_TRUE(openssl.run("x509 -req -in b.req -CA a.pem -CAkey a.key -set_serial 5 -outform "
                                "DER -out b.der"));
        ASSERT_TRUE(openssl.run("ca -gencrl -config openssl.cnf -cert a.pem -keyfile a.key "
                                "-crldays 30 -md default -out crl.pem"));
        ASSERT_TRUE(openssl.run("crl -in crl.pem -outform DER -out crl.der"));

        const CertificateItem authority(blob(openssl.bytes("a.der")));
        const CertificateItem holder(blob(openssl.bytes("b.der")));
        const auto& authority_key = authority.decoded()->tbsCertificate.subjectPublicKeyInfo;
        const auto& holder_key = holder.decoded()->tbsCertificate.subjectPublicKeyInfo;
        EXPECT_TRUE(holder.verify_with_key(authority_key));
        EXPECT_FALSE(holder.is_self_signed());
        EXPECT_FALSE(authority.verify_with_key(holder_key));

        const Bytes bytes = openssl.bytes("crl.der");
        const CRLItem crl(blob(bytes));
        EXPECT_TRUE(crl.verify_with_key(authority_key));
        EXPECT_FALSE(crl.verify_with_key(holder_key));
        const ByteView entries = crl.decoded()->tbsCertList.encoding;
        EXPECT_FALSE(verifies_when_changed<CRLItem>(bytes, entries.end() - 1, crl.encoded().data,
                                                    authority_key));
    }
}

} // namespace norvane
