#include "support/CertificateBuilder.h"
#include "support/ConfiguredProcess.h"

#include <norvane/platform/pkup.h>
#include <norvane/wincrypt.h>

#include <array>
#include <cmath>

namespace {

using namespace norvane::testing;

constexpr DATE second = 1 / 86400.0;
// The bounds of the period, which a DATE need not hit, in local time, five and a half hours ahead.
constexpr DATE first = 43831 + 5.5 / 24;
constexpr DATE last = 45809.5 + 5.5 / 24;

Bytes usage_period(const Bytes& value) { return extension("2.5.29.16", Critical::no, value); }
Bytes not_before(std::string_view time) { return context_primitive(0, text_bytes(time)); }
Bytes not_after(std::string_view time) { return context_primitive(1, text_bytes(time)); }

Bytes with_extensions(const std::vector<Bytes>& extensions) {
    return CertificateBuilder{.extensions = extensions}.sign(Key::ec(0));
}
Bytes with_period(const Bytes& value) { return with_extensions({usage_period(value)}); }

/// What the component says about a certificate: the failure, and the answer.
using Verdict = std::pair<DWORD, VARIANT_BOOL>;
constexpr Verdict inside{S_OK, VARIANT_TRUE};
constexpr Verdict outside{S_OK, VARIANT_FALSE};
constexpr Verdict corrupt{CRYPT_E_ASN1_CORRUPT, VARIANT_FALSE};
constexpr std::array malformed{corrupt, corrupt, corrupt, corrupt};

Verdict check(IPrivateKeyUsageChecker& checker, Bytes encoded, DATE date) {
    CERT_CONTEXT context{};
    context.pbCertEncoded = encoded.data();
    context.cbCertEncoded = static_cast<DWORD>(encoded.size());
    VARIANT variant{};
    variant.vt = VT_UI8;
    variant.ullVal = reinterpret_cast<std::uintptr_t>(&context);
    VARIANT_BOOL answer = 77;
    const HRESULT result = checker.Check(variant, date, &answer);
    return {static_cast<DWORD>(result), answer};
}

} // namespace

TEST(PrivateKeyUsageChecker, JudgesToTheSecondWithBothBoundsIncludedAndFailsOnMalformedValues) {
    const Bytes begin = not_before("20200101000000Z");
    const Bytes begin_with_zone = not_before("20200101053000+0530");
    const Bytes end = not_after("20250601120000Z");
    const Bytes both = with_period(sequence(begin, end));
    const Bytes period = usage_period(sequence(begin));
    const std::pair<Bytes, std::array<Verdict, 4>> cases[] = {
        {both, {outside, inside, inside, outside}},
        {to_indefinite(both), {outside, inside, inside, outside}},
        {with_extensions({period}), {outside, inside, inside, inside}},
        {with_period(sequence(begin_with_zone)), {outside, inside, inside, inside}},
        {with_period(sequence(end)), {inside, inside, inside, outside}},
        {with_extensions({}), {inside, inside, inside, inside}},
        {with_period(sequence()), malformed},
        {with_period(sequence(end, begin)), malformed},
        {with_period(sequence(not_before("20200101000000"))), malformed}, // local time
        {with_period(hex("30 82 ff ff 80 00")), malformed},
        {with_extensions({period, period}), malformed},
        {cat(both, null()), malformed},
    };
    EXPECT_TRUE(passes_when_configured("", [&] {
        setenv("TZ", "<+0530>-5:30", 1);
        void* object = nullptr;
        EXPECT_GE(CoInitializeEx(nullptr, COINIT_MULTITHREADED), 0);
        ASSERT_EQ(CoCreateInstance(CLSID_PrivateKeyUsageChecker, nullptr, CLSCTX_ALL,
                                   IID_IPrivateKeyUsageChecker, &object),
                  HRESULT{S_OK});
        auto& checker = *static_cast<IPrivateKeyUsageChecker*>(object);
        for (const auto& [encoded, verdicts] : cases) {
            SCOPED_TRACE(::testing::PrintToString(encoded));
            EXPECT_EQ(check(checker, encoded, first - 0.6 * second), verdicts[0]);
            EXPECT_EQ(check(checker, encoded, first - 0.4 * second), verdicts[1]);
            EXPECT_EQ(check(checker, encoded, last + 0.4 * second), verdicts[2]);
            EXPECT_EQ(check(checker, encoded, last + 0.6 * second), verdicts[3]);
        }
        for (const DATE date : {double{NAN}, 1e300, 2958466.0, -200000.0}) {
            EXPECT_EQ(check(checker, both, date), Verdict(E_INVALIDARG, VARIANT_FALSE));
        }
        EXPECT_EQ(checker.Release(), 0U);
    }));
}
