#include "crypto/CAtlException.h"
#include "crypto/VerifySignature.h"

#include "FakePlatform.h"
#include "support/Der.h"
#include "values/ErrorOf.h"
#include "values/Exceptions.h"

#include <gtest/gtest.h>

namespace norvane {
namespace {

using testing::Bytes;
using Log = std::vector<std::string>;

constexpr ALG_ID hash_algorithm = 0x8011;
constexpr ALG_ID key_algorithm = 0x2411;
constexpr DWORD wanted_type = 77;

const Log after_acquire = {"CreateHash 32785", "HashData",    "ImportPublicKeyInfoEx",
                           "VerifySignature",  "DestroyHash", "DestroyKey",
                           "ReleaseContext"};

/// An identifier with this text, which it keeps alive.
struct Identifier {
    explicit Identifier(std::string_view text) : encoded(testing::oid(text)) {}
    [[nodiscard]] ASN1TObjId oid() const {
        const std::size_t header = encoded.size() < 0x80 + 2 ? 2 : 3;
        return ASN1TObjId(
            {encoded.data() + header, static_cast<std::uint32_t>(encoded.size() - header)});
    }
    Bytes encoded;
};

/// "1.2" and then arcs up to this length.
std::string long_oid(std::size_t length) {
    std::string text = "1.2";
    while (text.size() + 5 < length) {
        text += ".444";
    }
    return text + "." + std::string(length - text.size() - 1, '5');
}

class VerificationSteps : public ::testing::Test {
  protected:
    VerificationSteps() {
        fake::reset();
        platform().providers = {{1, "base", {key_algorithm}}, {wanted_type, "wanted", {}}};
        platform().oids = {
            {CRYPT_HASH_ALG_OID_GROUP_ID, "1.1", hash_algorithm},
            {CRYPT_PUBKEY_ALG_OID_GROUP_ID, "1.2", key_algorithm},
            {CRYPT_PUBKEY_ALG_OID_GROUP_ID, "1.22", key_algorithm + 1},
            {CRYPT_SIGN_ALG_OID_GROUP_ID, "1.3", hash_algorithm, {key_algorithm, 0, wanted_type}},
            {CRYPT_SIGN_ALG_OID_GROUP_ID, "1.33", hash_algorithm, {key_algorithm + 1}}};
        tbs.encoding = {tbs_bytes.data(), static_cast<std::uint32_t>(tbs_bytes.size())};
    }

    fake::Platform& platform() { return fake::platform(); }

    bool verify(std::string_view signature_oid = "1.3", std::string_view key_oid = "1.2") {
        const Identifier signature_identifier(signature_oid);
        const Identifier key_identifier(key_oid);
        ASN1T_SubjectPublicKeyInfo spki;
        spki.algorithm.algorithm = key_identifier.oid();
        spki.algorithm.parameters = {parameters.data(),
                                     static_cast<std::uint32_t>(parameters.size())};
        spki.subjectPublicKey = {key_bits, key.data()};
        ASN1T_AlgorithmIdentifier algorithm;
        algorithm.algorithm = signature_identifier.oid();
        ASN1BEREncodeBuffer buffer;
        const ASN1C_TBSCertificate control(buffer, tbs);
        return verify_signature(buffer, control, signature, spki, algorithm);
    }

    /// The calls of verify() with its result at the end.
    Log steps() {
        platform().log.clear();
        const bool good = verify();
        platform().log.emplace_back(good ? "good" : "bad");
        EXPECT_EQ(platform().open, 0);
        return platform().log;
    }

    Bytes tbs_bytes = testing::hex("30 03 02 01 05");
    Bytes parameters = testing::hex("05 00");
    Bytes key = {1, 2, 3};
    std::uint32_t key_bits = 20;
    Bytes signature_octets = {0x11, 0x22, 0x33};
    ASN1TBitStr signature{24, signature_octets.data()};
    ASN1T_TBSCertificate tbs;
};

Log with_ends(const std::string& first, Log middle, const std::string& last) {
    middle.insert(middle.begin(), first);
    middle.push_back(last);
    return middle;
}

} // namespace

TEST_F(VerificationSteps, HandTheProviderWhatTheObjectsSayInOrder) {
    EXPECT_EQ(steps(), with_ends("Acquire wanted", after_acquire, "good"));
    EXPECT_EQ(platform().hashed, tbs_bytes);
    EXPECT_EQ(platform().key_oid, "1.2");
    EXPECT_EQ(platform().parameters, parameters);
    EXPECT_EQ(platform().key, key); // 20 bits take three octets.
    EXPECT_EQ(platform().unused_bits, 0U);
    EXPECT_EQ(platform().signature, (Bytes{0x33, 0x22, 0x11}));

    platform().verdict = FALSE;
    EXPECT_EQ(steps(), with_ends("Acquire wanted", after_acquire, "bad"));
}

TEST_F(VerificationSteps, TurnSignaturesOfAnyCountOfBits) {
    Bytes octets(64);
    for (std::size_t i = 0; i < octets.size(); ++i) {
        octets[i] = static_cast<std::uint8_t>(i);
    }
    const struct {
        std::uint32_t bits;
        std::uint32_t size;
    } cases[] = {{512, 64}, {13, 2}, {8, 1}, {1, 1}, {0, 0}};
    for (const auto& test : cases) {
        CACMPT_BLOB reversed;
        reverse_signature(reversed, {test.bits, octets.data()});
        EXPECT_EQ(Bytes(reversed.data, reversed.data + reversed.length),
                  Bytes(octets.rend() - test.size, octets.rend()));
    }
    for (const std::uint32_t bits : {0xFFFFFFF9U, 0xFFFFFFFFU}) { // Rounding up overflows.
        const Error error = error_of([&] {
            CACMPT_BLOB out;
            reverse_signature(out, {bits, octets.data()});
            return 0;
        });
        EXPECT_EQ(error, (Error{"CAException", "signature too long", "EncodeAnd"}));
    }
}

TEST_F(VerificationSteps, AnswerNoWithoutAnExceptionWhereAlgorithmsDoNotBelongTogether) {
    const struct {
        const char* what;
        const char* signature;
        const char* key;
    } cases[] = {{"signature unknown", "1.9", "1.2"},
                 {"signature of no hash class", "1.2", "1.2"},
                 {"key unknown", "1.3", "1.9"},
                 {"key of another signature", "1.3", "1.22"},
                 {"signature of another key", "1.33", "1.2"},
                 {"the hash itself", "1.1", "1.2"}};
    for (const auto& test : cases) {
        EXPECT_FALSE(verify(test.signature, test.key)) << test.what;
        EXPECT_EQ(platform().log, Log{}) << test.what;
    }
    platform().oids.erase(platform().oids.begin()); // The hash has no identifier.
    EXPECT_FALSE(verify());
    EXPECT_EQ(platform().log, Log{});
}

TEST_F(VerificationSteps, TakeTheTypeOfProviderFromTheThirdWordOnly) {
    const struct {
        std::vector<DWORD> extra;
        DWORD group;
    } cases[] = {{{key_algorithm, 0, 0}, CRYPT_SIGN_ALG_OID_GROUP_ID},
                 {{key_algorithm, wanted_type}, CRYPT_SIGN_ALG_OID_GROUP_ID},
                 {{key_algorithm, 0, wanted_type}, CRYPT_SIGN_ALG_OID_GROUP_ID + 1}};
    for (const auto& test : cases) {
        platform().oids[3].extra = test.extra;
        platform().oids[3].group = test.group;
        const Log log = steps();
        ASSERT_GT(log.size(), 2U);
        EXPECT_EQ(log[0], "EnumProviderTypes");
        EXPECT_EQ(log[1], "Acquire base");
        EXPECT_EQ(log.back(), "good");
    }
}

TEST_F(VerificationSteps, FailWithTheErrorOfThePlatformAndLeaveNothingOpen) {
    const Log failing = {"Acquire wanted", "CreateHash", "HashData", "ImportPublicKeyInfoEx"};
    for (const std::string& call : failing) {
        SCOPED_TRACE(call);
        platform().failures = {{call, NTE_BAD_PUBLIC_KEY}};
        // What is destroyed meanwhile does not change the error.
        try {
            static_cast<void>(verify());
            ADD_FAILURE() << "no exception";
        } catch (const CryptException& error) {
            EXPECT_EQ(error.code(), NTE_BAD_PUBLIC_KEY);
            EXPECT_EQ(error.file(), "EncodeAnd");
        }
        EXPECT_EQ(platform().open, 0);
    }

    platform().failures.clear();
    platform().oids[3].extra = {key_algorithm};
    platform().providers[0].algorithms.clear();
    SetLastError(ERROR_SUCCESS);
    try {
        static_cast<void>(verify());
        ADD_FAILURE() << "no exception";
    } catch (const CryptException& error) {
        EXPECT_EQ(error.code(), 0x80092004);
        EXPECT_EQ(GetLastError(), 0x80092004);
        EXPECT_NE(std::string(error.what()).find(format_error_code(0x80092004)), std::string::npos);
    }
    platform().failures = {{"Acquire base", NTE_FAIL}};
    EXPECT_THROW(static_cast<void>(verify()), CAtlException);
    EXPECT_EQ(platform().open, 0);

    platform().failures.clear();
    platform().oids[3].extra = {key_algorithm, 0, wanted_type};
    tbs.encoding = {};
    EXPECT_EQ(error_of([&] { return verify(); }).type, "Asn1Exception");
    EXPECT_EQ(platform().open, 0);
}

TEST_F(VerificationSteps, LimitTheTextsOfIdentifiers) {
    const Error invalid{"Asn1DecodeException", "Invalid ASN1T_AlgorithmIdentifier", "ASN1Util"};
    const Error too_long{"Asn1DecodeException", "algorithm id too long", "ASN1Util"};
    EXPECT_EQ(error_of([&] { return verify(long_oid(255)); }), Error{}) << "only unknown";
    EXPECT_EQ(error_of([&] { return verify(long_oid(256)); }), invalid);
    EXPECT_EQ(error_of([&] { return verify("1.3", long_oid(256)); }), invalid);

    const auto verify_with_known_key = [this](std::size_t length) {
        platform().oids[1].oid = long_oid(length);
        return error_of([&] { return verify("1.3", long_oid(length)); });
    };
    EXPECT_EQ(verify_with_known_key(128), Error{});
    for (const std::size_t length : {129U, 200U, 255U}) {
        EXPECT_EQ(verify_with_known_key(length), too_long) << length;
        EXPECT_EQ(platform().open, 0);
    }
}

} // namespace norvane
