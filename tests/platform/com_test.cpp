#include "support/ConfiguredProcess.h"

#include <norvane/platform/pkup.h>
#include <norvane/wincrypt.h>

#include <cmath>
#include <limits>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

namespace {

using norvane::testing::passes_when_configured;

constexpr DWORD in_process = CLSCTX_INPROC_SERVER;

DWORD code(HRESULT result) { return static_cast<DWORD>(result); }

/// Makes an object of a class, and releases it; the result alone is of interest.
DWORD try_create(REFCLSID class_id, REFIID interface_id = IID_IUnknown, IUnknown* outer = nullptr,
                 DWORD context = CLSCTX_ALL) {
    void* object = &object;
    const HRESULT result = CoCreateInstance(class_id, outer, context, interface_id, &object);
    EXPECT_EQ(object == nullptr, FAILED(result));
    if (object != nullptr) {
        static_cast<IUnknown*>(object)->Release();
    }
    return code(result);
}

/// Counts its references, and nothing else.
struct Counted final : IDispatch {
    ULONG references = 1;

    HRESULT QueryInterface(REFIID /*riid*/, void** /*object*/) override { return -1; }
    ULONG AddRef() override { return ++references; }
    ULONG Release() override { return --references; }
    HRESULT GetTypeInfoCount(UINT* /*count*/) override { return -1; }
    HRESULT GetTypeInfo(UINT /*info*/, LCID /*lcid*/, ITypeInfo** /*type_info*/) override {
        return -1;
    }
    HRESULT GetIDsOfNames(REFIID /*riid*/, LPOLESTR* /*names*/, UINT /*count*/, LCID /*lcid*/,
                          DISPID* /*ids*/) override {
        return -1;
    }
    HRESULT Invoke(DISPID /*id*/, REFIID /*riid*/, LCID /*lcid*/, WORD /*flags*/,
                   DISPPARAMS* /*parameters*/, VARIANT* /*result*/, EXCEPINFO* /*exception*/,
                   UINT* /*error*/) override {
        return -1;
    }
};

std::string text(const SYSTEMTIME& t) {
    std::string joined;
    for (const int field : {t.wYear, t.wMonth, t.wDay, t.wHour, t.wMinute, t.wSecond}) {
        joined += std::to_string(field) + ' ';
    }
    return joined;
}

} // namespace

TEST(ComApartment, CountsEntriesOfEachThread) {
    const auto in_thread = [](const auto& checks) { std::jthread{checks}; };
    in_thread([&] {
        CoUninitialize(); // not in it: nothing happens
        EXPECT_EQ(code(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)), S_OK);
        EXPECT_EQ(code(CoInitializeEx(nullptr, COINIT_MULTITHREADED)), RPC_E_CHANGED_MODE);
        EXPECT_EQ(code(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE)),
                  S_FALSE);
        in_thread([] { EXPECT_EQ(code(CoInitializeEx(nullptr, COINIT_MULTITHREADED)), S_OK); });
        CoUninitialize();
        EXPECT_EQ(code(CoInitializeEx(nullptr, COINIT_MULTITHREADED)), RPC_E_CHANGED_MODE);
        CoUninitialize();
        EXPECT_EQ(code(CoInitializeEx(nullptr, COINIT_MULTITHREADED)), S_OK);
        int reserved = 0;
        EXPECT_EQ(code(CoInitializeEx(&reserved, COINIT_MULTITHREADED)), E_INVALIDARG);
        EXPECT_EQ(code(CoInitializeEx(nullptr, 0x10)), E_INVALIDARG);
    });
}

TEST(ComActivation, FindsTheComponentOfTheProductWithoutConfiguration) {
    EXPECT_TRUE(passes_when_configured("", [] {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([] {
                EXPECT_EQ(code(CoInitializeEx(nullptr, COINIT_MULTITHREADED)), S_OK);
                for (const IID& iid : {IID_IUnknown, IID_IDispatch, IID_IPrivateKeyUsageChecker}) {
                    EXPECT_EQ(try_create(CLSID_PrivateKeyUsageChecker, iid), S_OK);
                }
            });
        }
    }));
}

TEST(ComActivation, TellsWhyThereIsNoObject) {
    constexpr CLSID not_a_library = {1, 0, 0, {}};
    constexpr CLSID without_export = {2, 0, 0, {}};
    constexpr CLSID of_another = {0xABCDEF01, 0x2345, 0x6789, {1, 2, 3, 4, 5, 6, 7, 0xAB}};
    constexpr CLSID unknown = {4, 0, 0, {}};
    EXPECT_TRUE(passes_when_configured(
        "[com]\n"
        "{00000001-0000-0000-0000-000000000000} = /dev/null\n"
        "{00000002-0000-0000-0000-000000000000} = " PLATFORM_LIBRARY "\n"
        "{abcdef01-2345-6789-0102-0304050607ab} = norvane_pkup.so\n",
        [&] {
            EXPECT_EQ(try_create(CLSID_PrivateKeyUsageChecker), CO_E_NOTINITIALIZED);
            ASSERT_EQ(code(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)), S_OK);
            EXPECT_EQ(code(CoCreateInstance(unknown, nullptr, in_process, IID_IUnknown, nullptr)),
                      E_POINTER);
            EXPECT_EQ(try_create(unknown), REGDB_E_CLASSNOTREG);
            EXPECT_EQ(try_create(CLSID_PrivateKeyUsageChecker, IID_IUnknown, nullptr,
                                 CLSCTX_ALL & ~in_process),
                      REGDB_E_CLASSNOTREG);
            EXPECT_EQ(try_create(not_a_library), CO_E_DLLNOTFOUND);
            EXPECT_EQ(try_create(without_export), CO_E_ERRORINDLL);
            EXPECT_EQ(try_create(of_another), CLASS_E_CLASSNOTAVAILABLE);
            EXPECT_EQ(try_create(CLSID_PrivateKeyUsageChecker, IID_IClassFactory), E_NOINTERFACE);
            Counted outer;
            EXPECT_EQ(try_create(CLSID_PrivateKeyUsageChecker, IID_IUnknown, &outer),
                      CLASS_E_NOAGGREGATION);
            CoUninitialize();
            EXPECT_EQ(try_create(CLSID_PrivateKeyUsageChecker), CO_E_NOTINITIALIZED);
        }));
}

TEST(Variant, ReleasesTheObjectThatItHolds) {
    Counted object;
    VARIANT value{};
    const struct {
        VARTYPE type;
        DWORD result;
        ULONG references_left;
    } cases[] = {
        {VT_UNKNOWN, S_OK, 0},
        {VT_DISPATCH, S_OK, 0},
        {VT_UNKNOWN | VT_BYREF, S_OK, 1},
        {VT_UI8, S_OK, 1},
        {VT_EMPTY, S_OK, 1},
        {VT_UI8 | 0x2000, DISP_E_BADVARTYPE, 1},
        {8, DISP_E_BADVARTYPE, 1},
        {24, DISP_E_BADVARTYPE, 1},
    };
    for (const auto& item : cases) {
        SCOPED_TRACE(item.type);
        object.references = 1;
        value.vt = item.type;
        if (item.type == VT_UNKNOWN) {
            value.punkVal = &object;
        } else {
            value.pdispVal = &object;
        }
        EXPECT_EQ(code(VariantClear(&value)), item.result);
        EXPECT_EQ(object.references, item.references_left);
        EXPECT_EQ(value.vt, item.result == S_OK ? VARTYPE{VT_EMPTY} : item.type);
    }
    value.vt = VT_UNKNOWN;
    value.punkVal = nullptr;
    EXPECT_EQ(code(VariantClear(&value)), S_OK);
    EXPECT_EQ(code(VariantClear(nullptr)), E_INVALIDARG);
}

TEST(VariantTime, CountsTheTimeOfDayForwardOnBothSidesOfItsEpoch) {
    // Year, month, day of the week, day, hour, minute, second, milliseconds.
    const struct {
        SYSTEMTIME fields;
        DATE date;
    } cases[] = {
        {{1899, 12, 6, 30, 0, 0, 0, 0}, 0.0},
        {{1899, 12, 6, 30, 6, 0, 0, 0}, 0.25},
        {{1899, 12, 5, 29, 0, 0, 0, 0}, -1.0},
        {{1899, 12, 5, 29, 6, 0, 0, 0}, -1.25},
        {{1899, 12, 5, 29, 18, 0, 0, 0}, -1.75},
        {{1970, 1, 4, 1, 0, 0, 0, 0}, 25569.0},
        {{2000, 2, 2, 29, 12, 0, 0, 0}, 36585.5},
        {{1900, 3, 4, 1, 0, 0, 0, 0}, 61.0},
        {{100, 1, 5, 1, 18, 0, 0, 0}, -657434.75},
        {{9999, 12, 5, 31, 12, 0, 0, 0}, 2958465.5},
        {{9999, 12, 5, 31, 23, 59, 59, 0}, 2958465 + 86399 / 86400.0},
    };
    for (const auto& [fields, date] : cases) {
        SCOPED_TRACE(text(fields));
        SYSTEMTIME given = fields;
        given.wDayOfWeek = 77;
        given.wMilliseconds = 999;
        DATE converted = NAN;
        EXPECT_TRUE(SystemTimeToVariantTime(&given, &converted));
        EXPECT_EQ(converted, date);
        SYSTEMTIME back{};
        EXPECT_TRUE(VariantTimeToSystemTime(date, &back));
        EXPECT_EQ(text(back), text(fields));
        EXPECT_EQ(back.wDayOfWeek, fields.wDayOfWeek);
    }
}

TEST(VariantTime, RoundsToSecondsAcrossMidnight) {
    constexpr double second = 1 / 86400.0;
    const struct {
        DATE date;
        std::string fields;
    } cases[] = {
        {1 - 0.6 * second, "1899 12 30 23 59 59 "},
        {1 - 0.4 * second, "1899 12 31 0 0 0 "},
        {-1 - 0.4 * second, "1899 12 29 0 0 0 "},
        {-2 + 0.4 * second, "1899 12 30 0 0 0 "},
        {-0.5, "1899 12 30 12 0 0 "},
        {-2 + 0.6 * second, "1899 12 29 23 59 59 "},
    };
    for (const auto& [date, fields] : cases) {
        SYSTEMTIME broken_down{};
        EXPECT_TRUE(VariantTimeToSystemTime(date, &broken_down)) << date;
        EXPECT_EQ(text(broken_down), fields) << date;
    }
    for (int i = 0; i < 20'000; ++i) { // every second survives; a sample of all years
        SYSTEMTIME fields{static_cast<WORD>(100 + i % 9900),
                          static_cast<WORD>(1 + i % 12),
                          0,
                          static_cast<WORD>(1 + i % 28),
                          static_cast<WORD>(i % 24),
                          static_cast<WORD>(i % 59),
                          static_cast<WORD>(i % 60),
                          0};
        DATE date = NAN;
        SYSTEMTIME back{};
        ASSERT_TRUE(SystemTimeToVariantTime(&fields, &date));
        ASSERT_TRUE(VariantTimeToSystemTime(date, &back));
        ASSERT_EQ(text(back), text(fields));
    }
}

TEST(VariantTime, RefusesWhatIsOutOfRange) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    SYSTEMTIME fields{};
    for (const DATE date : {-657435.0, 2958466.0, 2958466 - 1e-7, 1e300, -1e300, infinity,
                            -infinity, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_FALSE(VariantTimeToSystemTime(date, &fields)) << date;
    }
    DATE date = 77;
    for (SYSTEMTIME wrong : {SYSTEMTIME{99, 12, 0, 31, 0, 0, 0, 0},
                             {10000, 1, 0, 1, 0, 0, 0, 0},
                             {100, 1, 0, 0, 0, 0, 0, 0},
                             {2000, 0, 0, 1, 0, 0, 0, 0},
                             {2000, 13, 0, 1, 0, 0, 0, 0},
                             {2000, 1, 0, 32, 0, 0, 0, 0},
                             {2000, 1, 0, 1, 24, 0, 0, 0},
                             {2000, 1, 0, 1, 0, 60, 0, 0},
                             {2000, 1, 0, 1, 0, 0, 60, 0},
                             {65535, 1, 0, 1, 0, 0, 0, 0}}) {
        EXPECT_FALSE(SystemTimeToVariantTime(&wrong, &date)) << text(wrong);
    }
    EXPECT_EQ(date, 77);
    // Days count on from the month, as the platform documents.
    for (SYSTEMTIME odd : {SYSTEMTIME{2001, 2, 0, 29, 0, 0, 0, 0},
                           {2001, 3, 0, 1, 0, 0, 0, 0},
                           {2001, 1, 0, 0, 0, 0, 0, 0}}) {
        EXPECT_TRUE(SystemTimeToVariantTime(&odd, &date));
        EXPECT_EQ(date, odd.wDay == 0 ? 36891 : 36951) << text(odd);
    }
}
