#include "support/CertificateBuilder.h"
#include "support/ConfiguredProcess.h"

#include <norvane/platform/pkup.h>
#include <norvane/wincrypt.h>

#include <chrono>
#include <limits>
#include <memory>
#include <optional>

namespace {

using namespace norvane::testing;
using namespace std::chrono_literals;
using std::chrono::sys_days;
using std::chrono::sys_seconds;

constexpr auto zone_offset = 5h + 30min;
constexpr sys_seconds first = sys_days{2020y / 1 / 1};
constexpr sys_seconds last = sys_days{2025y / 6 / 1} + 12h;

struct Release {
    void operator()(IUnknown* object) const { object->Release(); }
};
using Checker = std::unique_ptr<IPrivateKeyUsageChecker, Release>;

Checker make_checker() {
    void* object = nullptr;
    EXPECT_GE(CoInitializeEx(nullptr, COINIT_MULTITHREADED), 0);
    EXPECT_EQ(CoCreateInstance(CLSID_PrivateKeyUsageChecker, nullptr, CLSCTX_ALL,
                               IID_IPrivateKeyUsageChecker, &object),
              HRESULT{S_OK});
    return Checker(static_cast<IPrivateKeyUsageChecker*>(object));
}

/// Local time, as the component is given it.
DATE local_date(sys_seconds utc) {
    const auto since_epoch = utc + zone_offset - sys_days{1899y / 12 / 30};
    return static_cast<double>(since_epoch.count()) / 86400;
}

Bytes usage_period(const Bytes& value) { return extension("2.5.29.16", Critical::no, value); }
Bytes not_before(std::string_view time) { return context_primitive(0, text_bytes(time)); }
Bytes not_after(std::string_view time) { return context_primitive(1, text_bytes(time)); }

Bytes certificate(const std::vector<Bytes>& extensions) {
    return CertificateBuilder{.extensions = extensions}.sign(Key::ec(0));
}

/// What the component says about a certificate: the answer, or the failure.
struct Verdict {
    DWORD result;
    VARIANT_BOOL answer;
    friend bool operator==(const Verdict&, const Verdict&) = default;
};
constexpr Verdict inside{S_OK, VARIANT_TRUE};
constexpr Verdict outside{S_OK, VARIANT_FALSE};
constexpr Verdict malformed{CRYPT_E_ASN1_CORRUPT, VARIANT_FALSE};

void PrintTo(const Verdict& verdict, std::ostream* out) {
    *out << std::hex << verdict.result << ", " << verdict.answer;
}

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

/// In a process whose local time is not UTC.
::testing::AssertionResult passes(const std::function<void(IPrivateKeyUsageChecker&)>& checks) {
    return passes_when_configured("", [&] {
        setenv("TZ", "<+0530>-5:30", 1);
        const Checker checker = make_checker();
        ASSERT_NE(checker, nullptr);
        checks(*checker);
    });
}

} // namespace

TEST(PrivateKeyUsageChecker, JudgesToTheSecondWithBothBoundsIncluded) {
    EXPECT_TRUE(passes([](IPrivateKeyUsageChecker& checker) {
        const Bytes begin = not_before("20200101000000Z");
        const Bytes end = not_after("20250601120000Z");
        const Bytes both = certificate({usage_period(sequence(begin, end))});
        const Bytes with_begin = certificate({usage_period(sequence(begin))});
        const Bytes with_end = certificate({usage_period(sequence(end))});
        const Bytes without = certificate({});
        const Bytes of_version_1 = CertificateBuilder{.version = 0}.sign(Key::ec(0));
        const Bytes turned =
            certificate({usage_period(sequence(not_before("20260101000000Z"), end))});
        const struct {
            sys_seconds moment;
            Verdict by_both, by_begin, by_end;
        } cases[] = {
            {first - 1s, outside, outside, inside},
            {first, inside, inside, inside},
            {last, inside, inside, inside},
            {last + 1s, outside, inside, outside},
            {sys_days{9999y / 12 / 30}, outside, inside, outside},
            {sys_days{1899y / 12 / 30} - zone_offset, outside, outside, inside},
        };
        for (const auto& [moment, by_both, by_begin, by_end] : cases) {
            // A DATE is a fraction that need not be exact.
            for (const double noise : {-0.4 / 86400, 0.0, 0.4 / 86400}) {
                const DATE date = local_date(moment) + noise;
                SCOPED_TRACE(date);
                EXPECT_EQ(check(checker, both, date), by_both);
                EXPECT_EQ(check(checker, with_begin, date), by_begin);
                EXPECT_EQ(check(checker, with_end, date), by_end);
                EXPECT_EQ(check(checker, without, date), inside);
                EXPECT_EQ(check(checker, of_version_1, date), inside);
                EXPECT_EQ(check(checker, turned, date), outside);
            }
        }
        const Bytes indefinite = to_indefinite(both);
        EXPECT_EQ(check(checker, indefinite, local_date(first)), inside);
        const Bytes with_zone =
            certificate({usage_period(sequence(not_before("20200101053000+0530")))});
        EXPECT_EQ(check(checker, with_zone, local_date(first)), inside);
        EXPECT_EQ(check(checker, with_zone, local_date(first - 1s)), outside);
    }));
}

TEST(PrivateKeyUsageChecker, FailsOnMalformedExtensionsAndCertificates) {
    EXPECT_TRUE(passes([](IPrivateKeyUsageChecker& checker) {
        const Bytes good = not_before("20200101000000Z");
        const Bytes period = usage_period(sequence(good));
        const Bytes values[] = {
            {},
            sequence(),
            tlv(0x31, good),
            sequence(generalized_time("20200101000000Z")),
            sequence(good, good),
            sequence(not_after("20250101000000Z"), good),
            sequence(good, null()),
            cat(sequence(good), null()),
            sequence(context(0, generalized_time("20200101000000Z"))),
            sequence(not_before("20200101000000")), // local time
            sequence(not_before("200101000000Z")),
            sequence(not_before("20200230000000Z")),
            sequence(not_before("")),
            hex("30 82 ff ff 80 00"),
        };
        for (const Bytes& value : values) {
            EXPECT_EQ(check(checker, certificate({usage_period(value)}), local_date(first)),
                      malformed)
                << "value " << &value - values;
        }
        EXPECT_EQ(check(checker, certificate({period, period}), local_date(first)), malformed);
        Bytes cut = certificate({period});
        EXPECT_EQ(check(checker, cat(cut, null()), local_date(first)), malformed);
        cut.pop_back();
        EXPECT_EQ(check(checker, cut, local_date(first)), malformed);
        EXPECT_EQ(check(checker, {0x30}, local_date(first)), malformed);
    }));
}

TEST(PrivateKeyUsageChecker, RefusesBadArguments) {
    EXPECT_TRUE(passes([](IPrivateKeyUsageChecker& checker) {
        const Bytes encoded = certificate({});
        for (const DATE date : {std::numeric_limits<double>::quiet_NaN(), 1e9,
                                local_date(sys_days{1600y / 12 / 30})}) {
            EXPECT_EQ(check(checker, encoded, date), (Verdict{E_INVALIDARG, VARIANT_FALSE}));
        }
        VARIANT variant{};
        VARIANT_BOOL answer = VARIANT_TRUE;
        variant.vt = VT_UI8;
        EXPECT_EQ(static_cast<DWORD>(checker.Check(variant, 1, &answer)), E_POINTER);
        EXPECT_EQ(answer, VARIANT_FALSE);
        const CERT_CONTEXT empty{};
        variant.ullVal = reinterpret_cast<std::uintptr_t>(&empty);
        EXPECT_EQ(static_cast<DWORD>(checker.Check(variant, 1, &answer)), E_POINTER);
        EXPECT_EQ(static_cast<DWORD>(checker.Check(variant, 1, nullptr)), E_POINTER);
        for (const VARTYPE type : {VT_EMPTY, VT_I8, VT_UI4, VT_UNKNOWN}) {
            variant.vt = type;
            EXPECT_EQ(static_cast<DWORD>(checker.Check(variant, 1, &answer)), DISP_E_TYPEMISMATCH);
        }
        variant.vt = VT_UI8 | VT_BYREF;
        EXPECT_EQ(static_cast<DWORD>(checker.Check(variant, 1, &answer)), DISP_E_TYPEMISMATCH);
    }));
}

TEST(PrivateKeyUsageChecker, HasItsMethodInTheEighthPlaceOfTheTable) {
    EXPECT_TRUE(passes([](IPrivateKeyUsageChecker& checker) {
        using Check = HRESULT (*)(void*, VARIANT, DATE, VARIANT_BOOL*);
        using AddRef = ULONG (*)(void*);
        void* const* const table = *reinterpret_cast<void***>(&checker);
        VARIANT_BOOL answer = VARIANT_TRUE;
        EXPECT_EQ(static_cast<DWORD>(reinterpret_cast<Check>(table[7])(&checker, {}, 1, &answer)),
                  DISP_E_TYPEMISMATCH);
        EXPECT_EQ(answer, VARIANT_FALSE);
        EXPECT_EQ(reinterpret_cast<AddRef>(table[1])(&checker), 2U);
        EXPECT_EQ(reinterpret_cast<AddRef>(table[2])(&checker), 1U);
    }));
}
