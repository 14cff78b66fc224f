#include "OpensslCommand.h"
#include "items/CertificateItem.h"

#include <gtest/gtest.h>

namespace norvane {
namespace {

using testing::Bytes;
using testing::OpensslCommand;

CACMPT_BLOB blob(const Bytes& bytes) {
    return {bytes.data(), static_cast<std::uint32_t>(bytes.size())};
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
        const ByteView serial = tree.tbsCertificate.serialNumber.content();
        const ByteView signature = tree.signature.octets();
        for (const std::uint8_t* octet :
             {serial.end() - 1, signature.begin(), signature.begin() + signature.length / 2,
              signature.end() - 1}) {
            Bytes changed = bytes;
            changed.at(static_cast<std::size_t>(octet - item.encoded().data)) ^= 0x01;
            EXPECT_FALSE(CertificateItem(blob(changed))
                             .verify_with_key(tree.tbsCertificate.subjectPublicKeyInfo));
        }
    }
}

} // namespace norvane
