#include "items/CRLItem.h"

#include "Material.h"

#include <gtest/gtest.h>

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

TEST(CRLItem, NumbersBeyond32BitsSaturateAndUnreadableOnesThrowAtEveryRead) {
    const std::string throws = "CAValidateException";
    const std::pair<const char*, std::string> cases[] = {{"0201 00", "0"},
                                                         {"0205 0100000000", "4294967295"},
                                                         {"0201 ff", throws},
                                                         {"0401 05", throws},
                                                         {"", throws}};
    for (const auto& [value, expected] : cases) {
        const CRLItem item = crl({crl_number(hex(value)), delta_crl_indicator(hex(value))});
        for (const auto accessor : {&CRLItem::crl_number, &CRLItem::delta_crl_indicator,
                                    &CRLItem::crl_number, &CRLItem::delta_crl_indicator}) {
            std::string found;
            const Error error =
                error_of([&] { return found = std::to_string((item.*accessor)().value()); });
            EXPECT_EQ(found + error.type, expected) << value;
        }
    }
}

TEST(CRLItem, KindIsZeroOrOneOrElseUnknown) {
    for (const auto& [value, kind] : {std::pair("0a0100", 0),
                                      {"0a0101", 1},
                                      {"0a0102", -1},
                                      {"020101", -1},
                                      {"0a05 0100000001", -1}})
        EXPECT_EQ(with("1.2.643.2.2.49.1", hex(value)).crl_kind(), kind) << value;
}

TEST(CRLItem, AReasonThatIsNoOctetIsNoneAndTheEntryRevokes) {
    const std::pair<const char*, std::uint32_t> cases[] = {
        {"0a01 2a", 42},    {"0a02 00ff", 255},   {"0a02 0100", 0},
        {"0a02 fffe", 0},   {"0a01 ff", 0},       {"0a03 00fffe", 0},
        {"0a03 00ffff", 0}, {"0a04 0000fffe", 0}, {"0a01 80", 0},
    };
    for (const auto& [value, reason] : cases) {
        const Bytes code = extension("2.5.29.21", Critical::no, hex(value));
        const CRLItem item = crl(CrlBuilder{.entries = {{.serial = {0x05}, .extensions = {code}}}});
        EXPECT_EQ(item.find_entry_reason("0x05"), reason) << value;
    }
}

TEST(CRLItem, TheFirstEntryWithTheTextDecides) {
    const Bytes other = certificate_issuer({});
    const CRLItem item = crl(CrlBuilder{
        .entries = {
            {.serial = {0x05}},
            {.serial = {0x05}, .extensions = {reason_code(1)}},
            {.serial = {0x00, 0x05}, .extensions = {reason_code(2)}},
            {.serial = {0x80}, .extensions = {reason_code(3)}},
            {.serial = {0x00, 0xab}, .extensions = {other}},
            {.serial = {0x06},
             .extensions = {extension("2.5.29.21", Critical::no, integer(4)), reason_code(4)}},
            {.serial = {0x07}, .extensions = {other, reason_code(9), reason_code(4)}},
            {.serial = Bytes(200, 0x11), .extensions = {reason_code(6)}}}});
    const std::pair<std::string, std::uint32_t> cases[] = {
        {"0x05", 0},     {"0x0005", 2},   {"0X05", 65535}, {"", 65535},
        {"-0x80", 3},    {"0x80", 65535}, {"0x00ab", 0},   {"0x00AB", 65535},
        {"0xab", 65535}, {"0x06", 0},     {"0x07", 9},     {"0x" + std::string(400, '1'), 6}};
    for (const auto& [serial, found] : cases) {
        EXPECT_EQ(item.find_entry_reason(serial), found) << serial;
    }
    EXPECT_EQ(crl(CrlBuilder{}).find_entry_reason("0x05"), 65535U);
}

} // namespace
} // namespace norvane
