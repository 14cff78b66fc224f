#include "support/CertificateBuilder.h"
#include "support/ConfiguredProcess.h"

#include <norvane/platform/pkup.h>
#include <norvane/wincrypt.h>

#include <cmath>

namespace {

using namespace norvane::testing;

constexpr DATE second = 1 / 86400.0;
// The bounds of the period, which a DATE need not hit, in local time, five and a half hours ahead.
constexpr DATE first = 43831 + 5.5 / 24;
constexpr DATE last = 45809.5 + 5.5 / 24;

Bytes usage_period(const Bytes& value) { return extension("2.5.29.16", Critical::no, value); }
Bytes not_before(std::string_view time) { return context_primitive(0, text_bytes(time)); }

Bytes with_extensions(const std::vector<Bytes>& extensions) {
    return CertificateBuilder{.extensions = extensions}.sign(Key::ec(0));
}
Bytes with_period(const Bytes& value) { return with_extensions({usage_period(value)}); }

/// What the component answers: 'i'nside, 'o'utside, 'm'alformed, or that it is no 'd'ate.
char check(IPrivateKeyUsageChecker& checker, Bytes encoded, DATE date) {
    CERT_CONTEXT context{};
    context.pbCertEncoded = encoded.data();
    context.cbCertEncoded = static_cast<DWORD>(encoded.size());
    VARIANT variant{};
    variant.vt = VT_UI8;
    variant.ullVal = reinterpret_cast<std::uintptr_t>(&context);
    VARIANT_BOOL answer = 77;
    const auto result = static_cast<DWORD>(checker.Check(variant, date, &answer));
    EXPECT_TRUE(answer == VARIANT_FALSE || (answer == VARIANT_TRUE && result == S_OK));
    switch (result) {
    case S_OK:
        return answer == VARIANT_TRUE ? 'i' : 'o';
    case CRYPT_E_ASN1_CORRUPT:
        return 'm';
    default:
        EXPECT_EQ(result, E_INVALIDARG);
        return 'd';
    }
}

} // namespace

TEST(PrivateKeyUsageChecker, JudgesToTheSecondWithBothBoundsIncludedAndFailsOnMalformedValues) {
    const Bytes begin = not_before("20200101000000Z");
    const Bytes end = context_primitive(1, text_bytes("20250601120000Z"));
    const Bytes both = with_period(sequence(begin, end));
    // With the answers just before and after each bound.
    const std::pair<Bytes, std::string> cases[] = {
        {both, "oiio"},
        {to_indefinite(both), "oiio"},
        {with_period(sequence(not_before("20200101053000+0530"))), "oiii"},
        {with_period(sequence(end)), "iiio"},
        {with_extensions({}), "iiii"},
        {with_period(sequence()), "mmmm"},
        {with_period(sequence(end, begin)), "mmmm"},
        {with_period(sequence(not_before("20200101000000"))), "mmmm"}, // local time
        {with_period(hex("30 82 ff ff 80 00")), "mmmm"},
        {with_extensions({usage_period(sequence(begin)), usage_period(sequence(begin))}), "mmmm"},
        {cat(both, null()), "mmmm"},
    };
    EXPECT_TRUE(passes_when_configured("", [&] {
        setenv("TZ", "<+0530>-5:30", 1);
        void* object = nullptr;
        EXPECT_GE(CoInitializeEx(nullptr, COINIT_MULTITHREADED), 0);
        ASSERT_EQ(CoCreateInstance(CLSID_PrivateKeyUsageChecker, nullptr, CLSCTX_ALL,
                                   IID_IPrivateKeyUsageChecker, &object),
                  HRESULT{S_OK});
        auto& checker = *static_cast<IPrivateKeyUsageChecker*>(object);
        for (const auto& [encoded, answers] : cases) {
            std::string found;
            for (const DATE date : {first - 0.6 * second, first - 0.4 * second, last + 0.4 * second,
                                    last + 0.6 * second}) {
                found += check(checker, encoded, date);
            }
            EXPECT_EQ(found, answers) << ::testing::PrintToString(encoded);
        }
        for (const DATE date : {double{NAN}, 1e300, -200000.0}) {
            EXPECT_EQ(check(checker, both, date), 'd');
        }
        EXPECT_EQ(checker.Release(), 0U);
    }));
}
