#include "items/CRLItem.h"

#include "Material.h"

#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include "support/AllocationCounter.h"
#include "values/ErrorOf.h"

namespace norvane {
namespace {

using namespace testing;

CRLItem with(const char* type, const Bytes& content, Critical critical = Critical::no) {
    return crl({extension(type, critical, content)});
}

TEST(CRLItem, AnIssuingDistributionPointThatIsNotCriticalThrowsAtTheFirstReadAlone) {
    const Bytes content = sequence(context_primitive(3, {6, 0x40}));
    const CRLItem item = with("2.5.29.28", content);
    const Error not_critical{"CAValidateException", "idp extension is not critical", "ChainBase"};
    EXPECT_EQ(error_of([&] { return item.idp_only_some_reasons(); }), not_critical);
    ASSERT_NE(item.issuing_distribution_point(), nullptr);
    EXPECT_EQ(item.idp_only_some_reasons(), 0x40);
    EXPECT_EQ(bytes_of(item.idp_raw()), content);
    const CRLItem copy(item);
    EXPECT_EQ(copy.idp_raw().length, 0U);
    EXPECT_EQ(error_of([&] { return copy.issuing_distribution_point(); }), not_critical);
    EXPECT_EQ(bytes_of(copy.idp_raw()), content);
    // One that is malformed as well goes on throwing: it must not pass for absent.
    const CRLItem malformed = with("2.5.29.28", sequence(null()));
    for (int read = 0; read < 3; ++read) {
        EXPECT_EQ(error_of([&] { return malformed.idp_only_some_reasons(); }).message,
                  "idp extension is malformed");
    }
}

TEST(CRLItem, SomeReasonsAreTheFirstEightBitsWithoutTheUnusedOnes) {
    const std::pair<std::optional<Bits>, int> cases[] = {
        {std::nullopt, 127},           {Bits{}, 0},
        {Bits{{0x80}, 7}, 0x80},       {Bits{{0xff}, 7}, 0x80},
        {Bits{{0x40, 0x80}, 7}, 0x40}, {Bits{{0x01, 0xff, 0x80}, 7}, 0x01}};
    for (const auto& [reasons, first] : cases)
        EXPECT_EQ(crl({issuing_distribution_point({.only_some_reasons = reasons})})
                      .idp_only_some_reasons(),
                  first);
}

TEST(CRLItem, TheAuthorityKeyIdentifierIsKeptRawAndTheVersionAsTheWholeExtension) {
    const CRLItem item = crl({authority_key_identifier(Bytes{1}), ca_version(integer(258))});
    EXPECT_EQ(item.aki_raw().length, 0U);
    EXPECT_EQ(bytes_of(item.authority_key_id()), Bytes{1});
    EXPECT_EQ(bytes_of(item.aki_raw()), hex("3003 800101"));
    EXPECT_EQ(item.ca_version()->extnValue, view(integer(258)));
}

TEST(CRLItem, NumbersBeyond32BitsSaturateAndUnreadableOnesThrowAtEveryRead) {
    const std::string bytes_of_20 = "0214 7f" + std::string(38, '7');
    const std::pair<std::string, std::optional<std::uint32_t>> cases[] = {
        {"0201 00", 0},
        {"0204 7fffffff", 0x7FFFFFFF},
        {"0205 0080000000", 0x80000000},
        {"0205 00fffffffe", 0xFFFFFFFE},
        {"0206 000000000005", 5},
        {"0205 0100000000", 0xFFFFFFFF},
        {bytes_of_20, 0xFFFFFFFF},
        {"0201 ff", std::nullopt},
        {"0205 8000000000", std::nullopt},
        {"0200", std::nullopt},
        {"0401 05", std::nullopt},
        {"0201 05 0500", std::nullopt},
        {"", std::nullopt}};
    for (const auto& [value, number] : cases) {
        const CRLItem item = crl({crl_number(hex(value)), delta_crl_indicator(hex(value))});
        for (const auto accessor : {&CRLItem::crl_number, &CRLItem::delta_crl_indicator,
                                    &CRLItem::crl_number, &CRLItem::delta_crl_indicator}) {
            std::optional<std::uint32_t> found;
            const Error error = error_of([&] { return found = (item.*accessor)(); });
            EXPECT_EQ(found, number) << value;
            EXPECT_EQ(error.type, number ? "" : "CAValidateException") << value;
        }
    }
}

TEST(CRLItem, KindIsZeroOrOneOrElseUnknown) {
    const std::pair<const char*, int> cases[] = {
        {"0a0100", 0},    {"0a0101", 1},  {"0a0102", -1}, {"0a01ff", -1},
        {"0a020100", -1}, {"020101", -1}, {"0a00", -1},   {"0a05 0100000001", -1}};
    for (const auto& [value, kind] : cases)
        EXPECT_EQ(with("1.2.643.2.2.49.1", hex(value)).crl_kind(), kind) << value;
}

TEST(CRLItem, TheFirstEntryWithTheTextDecides) {
    const auto reason = [](const Bytes& value) {
        return extension("2.5.29.21", Critical::no, value);
    };
    const Bytes other = certificate_issuer({});
    const CRLItem item = crl(CrlBuilder{
        .entries = {{.serial = {0x05}},
                    {.serial = {0x05}, .extensions = {reason_code(1)}},
                    {.serial = {0x00, 0x05}, .extensions = {reason_code(2)}},
                    {.serial = {0x80}, .extensions = {reason_code(3)}},
                    {.serial = {0x00, 0xab}, .extensions = {other}},
                    {.serial = {0x06}, .extensions = {reason(integer(4)), reason_code(4)}},
                    {.serial = {0x07}, .extensions = {other, reason_code(9), reason_code(4)}},
                    {.serial = {0xff, 0x80}, .extensions = {reason(hex("0a0206"))}},
                    {.serial = {0x09}, .extensions = {reason(enumerated(-1))}},
                    {.serial = Bytes(200, 0x11),
                     .date = generalized_time("20260101000000Z"),
                     .extensions = {reason_code(6)}},
                    {.serial = {0x00}, .extensions = {reason_code(10)}}}});
    const std::pair<std::string, std::uint32_t> cases[] = {
        {"0x05", 0},       {"0x0005", 2},        {"0x000005", 65535},
        {"0x5", 65535},    {"5", 65535},         {"0X05", 65535},
        {" 0x05", 65535},  {"0x05 ", 65535},     {"", 65535},
        {"0x", 65535},     {"-0x80", 3},         {"0x80", 65535},
        {"-0x0080", 0},    {"0xff80", 65535},    {"0x00ab", 0},
        {"0x00AB", 65535}, {"0xab", 65535},      {"0x06", 0},
        {"0x07", 9},       {"0x09", 0xFFFFFFFF}, {"0x" + std::string(400, '1'), 6},
        {"0x00", 10},      {"-0x00", 65535}};
    for (const auto& [serial, found] : cases) {
        EXPECT_EQ(item.find_entry_reason(serial), found) << serial;
    }
    EXPECT_EQ(crl(CrlBuilder{}).find_entry_reason("0x05"), 65535U);
}

TEST(CRLItem, FindingAnEntryIsComparingTexts) {
    std::mt19937 random(1); // NOLINT(cert-msc51-cpp): the same lists in every run
    const auto serial = [&] {
        Bytes content(1 + random() % 3);
        std::ranges::for_each(content, [&](auto& octet) {
            octet = std::array<std::uint8_t, 6>{0x00, 0x01, 0x7f, 0x80, 0xff, 0xab}[random() % 6];
        });
        return content;
    };
    for (int list = 0; list < 50; ++list) {
        CrlBuilder builder;
        for (int reason = static_cast<int>(random() % 30); reason > 0; --reason)
            builder.entries.push_back({.serial = serial(), .extensions = {reason_code(reason)}});
        const CRLItem item = crl(builder);
        for (int look_up = 0; look_up < 50; ++look_up) {
            const Bytes sought = serial();
            const std::string text = ASN1TInteger(view(sought)).text();
            std::uint32_t expected = 65535;
            for (const auto& entry : item.decoded()->tbsCertList.revokedCertificates) {
                if (expected == 65535 && entry.userCertificate.text() == text) {
                    expected = entry_reason(entry);
                }
            }
            EXPECT_EQ(item.find_entry_reason(text), expected) << text;
        }
    }
}

TEST(CRLItem, FindingAnEntryAllocatesNothingForTheOthers) {
    const auto allocations = [](std::uint32_t size) {
        const CRLItem item(blob(large_crl(size, Key::ec(0))));
        const Bytes last = large_crl_serial(size - 1);
        const std::string text = ASN1TInteger(view(last)).text();
        static_cast<void>(item.decoded());
        const AllocationCounter counter;
        EXPECT_EQ(item.find_entry_reason(text), 1 + (size - 1) % 5);
        return counter.count();
    };
    EXPECT_EQ(allocations(10), allocations(5000));
}

} // namespace
} // namespace norvane
