#include "support/ConfiguredProcess.h"

#include <norvane/platform/pkup.h>
#include <norvane/wincrypt.h>

#include <cmath>
#include <cstring>

namespace {

DWORD code(HRESULT result) { return static_cast<DWORD>(result); }

/// What making an object ends with; no object is expected of it.
DWORD create(REFCLSID class_id, REFIID interface_id = IID_IUnknown) {
    void* object = &object;
    const HRESULT result = CoCreateInstance(class_id, nullptr, CLSCTX_ALL, interface_id, &object);
    EXPECT_EQ(object, nullptr);
    return code(result);
}

} // namespace

TEST(ComActivation, TellsWhyThereIsNoObject) {
    constexpr CLSID of_another = {0xABCDEF01, 0x2345, 0x6789, {1, 2, 3, 4, 5, 6, 7, 0xAB}};
    EXPECT_TRUE(norvane::testing::passes_when_configured(
        "[com]\n"
        "{00000001-0000-0000-0000-000000000000} = /dev/null\n"
        "{00000002-0000-0000-0000-000000000000} = " PLATFORM_LIBRARY "\n"
        "{00000003-0000-0000-0000-000000000000} = nowhere.so\n"
        "{abcdef01-2345-6789-0102-0304050607ab} = norvane_pkup.so\n",
        [&] {
            CoUninitialize(); // Not in it: nothing happens.
            EXPECT_EQ(create(CLSID_PrivateKeyUsageChecker), CO_E_NOTINITIALIZED);
            ASSERT_EQ(code(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)), S_OK);
            EXPECT_EQ(create({4, 0, 0, {}}), REGDB_E_CLASSNOTREG);
            EXPECT_EQ(create({1, 0, 0, {}}), E_UNEXPECTED);
            EXPECT_EQ(create({3, 0, 0, {}}), CO_E_DLLNOTFOUND);
            EXPECT_EQ(create({2, 0, 0, {}}), CO_E_ERRORINDLL);
            EXPECT_EQ(create(of_another), CLASS_E_CLASSNOTAVAILABLE);
            EXPECT_EQ(create(CLSID_PrivateKeyUsageChecker, IID_IClassFactory), E_NOINTERFACE);
        }));
}

TEST(VariantTime, CountsTheTimeOfDayForwardOnBothSidesOfItsEpochAndStaysInRange) {
    // Year, month, day of the week, day, hour, minute, second, milliseconds.
    std::pair<SYSTEMTIME, DATE> cases[] = {
        {{2000, 2, 2, 29, 12, 0, 0, 0}, 36585.5},
        {{100, 1, 5, 1, 18, 0, 0, 0}, -657434.75},
        {{9999, 12, 5, 31, 23, 59, 59, 0}, 2958465 + 86399 / 86400.0},
    };
    SYSTEMTIME back{};
    for (auto& [fields, date] : cases) {
        DATE converted = NAN;
        EXPECT_TRUE(SystemTimeToVariantTime(&fields, &converted));
        EXPECT_EQ(converted, date);
        EXPECT_TRUE(VariantTimeToSystemTime(date, &back));
        EXPECT_EQ(std::memcmp(&back, &fields, sizeof back), 0) << date;
    }
    EXPECT_TRUE(VariantTimeToSystemTime(-2 + 0.4 / 86400, &back));
    EXPECT_EQ(back.wDay, 30) << "the end of the 29th rounds across midnight";
    EXPECT_FALSE(VariantTimeToSystemTime(2958466 - 1e-7, &back)) << "nor does it leave the range";
}
