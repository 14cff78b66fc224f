#include "items/PrivateKeyUsage.h"

#include "support/CertificateBuilder.h"
#include "support/ConfiguredProcess.h"
#include "values/Exceptions.h"

#include <norvane/platform/pkup.h>

namespace norvane {
namespace {

using namespace norvane::testing;

constexpr std::string_view key = "[registry]\nHKLM\\SOFTWARE\\Norvane\\PkiValidator\\";
constexpr std::string_view no_component =
    "[com]\n{1FDD1FC3-6347-49DF-BDAB-E465BF32AD92} = absent.so\n";

CACMPT_Date utc(WORD year, WORD month, WORD day, WORD hour = 0, WORD second = 0) {
    return from_system_time({year, month, 0, day, hour, 0, second, 0});
}

/// An issuer whose key may be used between two bounds, each "[0]" or "[1]" with its content.
CertificateItem issuer_with(const Bytes& bounds) {
    const std::vector<Bytes> extensions = {extension("2.5.29.16", Critical::no, sequence(bounds))};
    const Bytes encoded = CertificateBuilder{.extensions = extensions}.sign(Key::ec(0));
    return CertificateItem(CACMPT_BLOB(encoded.data(), static_cast<std::uint32_t>(encoded.size())));
}
Bytes from_2020() { return context_primitive(0, text_bytes("20200101000000Z")); }
Bytes to_2030() { return context_primitive(1, text_bytes("20300101000000Z")); }

/// The code of the CryptException that the check throws; 0 if it answers.
DWORD failure(const CACMPT_Date& date, const CertificateItem& issuer) {
    try {
        static_cast<void>(private_key_usage_check(date, issuer));
    } catch (const CryptException& exception) {
        EXPECT_EQ(exception.file(), source_module::chain_base);
        return exception.code();
    }
    return 0;
}

/// Whether the thread is out of COM, or has entered it just once and in this mode.
void expect_apartment(DWORD mode) {
    const DWORD other = mode ^ COINIT_APARTMENTTHREADED;
    EXPECT_EQ(static_cast<DWORD>(CoInitializeEx(nullptr, other)), RPC_E_CHANGED_MODE);
    CoUninitialize();
    EXPECT_EQ(CoInitializeEx(nullptr, other), HRESULT{S_OK}) << "entered more than once";
    CoUninitialize();
}

} // namespace

TEST(StrictPkupCheck, IsOnForAnyFourBytesThatAreNotZero) {
    const std::pair<std::string, StrictPkup> cases[] = {
        {"", StrictPkup::off},
        {std::string(key) + "StrictPkupCheck = dword:1", StrictPkup::on},
        // The type is not looked at: wide text with its terminator.
        {std::string(key) + "StrictPkupCheck = string:0", StrictPkup::on},
        {std::string(key) + "StrictPkupCheck = string:", StrictPkup::off},
    };
    for (const auto& [configuration, expected] : cases) {
        EXPECT_TRUE(passes_when_configured(configuration, [expected = expected] {
            EXPECT_EQ(strict_pkup_state, StrictPkup::unread);
            EXPECT_EQ(strict_pkup_is_on(), expected == StrictPkup::on);
            strict_pkup_state = StrictPkup::on; // It is not read again.
            EXPECT_TRUE(strict_pkup_is_on());
        })) << configuration;
    }
}

TEST(PrivateKeyUsageCheck, AnswersAsTheComponentDoesInAnyZone) {
    for (const char* zone : {"UTC0", "<+14>-14", "<-1030>10:30"}) {
        EXPECT_TRUE(passes_when_configured("", [zone] {
            setenv("TZ", zone, 1);
            const CertificateItem issuer = issuer_with(cat(from_2020(), to_2030()));
            EXPECT_FALSE(private_key_usage_check(utc(2019, 12, 31, 23, 59), issuer));
            EXPECT_TRUE(private_key_usage_check(utc(2020, 1, 1), issuer));
            EXPECT_TRUE(private_key_usage_check(utc(2030, 1, 1), issuer));
            EXPECT_FALSE(private_key_usage_check(utc(2030, 1, 1, 0, 1), issuer));
            // No FILETIME, and one beyond the years of DATE: both become 0.0, which is in 1899.
            for (const CACMPT_Date& date :
                 {CACMPT_Date::from_ticks(~std::uint64_t{0}), utc(10'000, 2, 1)}) {
                EXPECT_TRUE(private_key_usage_check(date, issuer_with(to_2030())));
                EXPECT_FALSE(private_key_usage_check(date, issuer_with(from_2020())));
            }
        })) << zone;
    }
}

TEST(PrivateKeyUsageCheck, LeavesTheApartmentAsItWas) {
    const CACMPT_Date date = utc(2025, 1, 1);
    EXPECT_TRUE(passes_when_configured("", [&] {
        for (const DWORD mode : {COINIT_MULTITHREADED, COINIT_APARTMENTTHREADED}) {
            EXPECT_EQ(failure(date, issuer_with({})), CRYPT_E_ASN1_CORRUPT);
            ASSERT_EQ(CoInitializeEx(nullptr, mode), HRESULT{S_OK}) << "the thread was not in COM";
            EXPECT_TRUE(private_key_usage_check(date, issuer_with(from_2020())));
            EXPECT_EQ(failure(date, issuer_with({})), CRYPT_E_ASN1_CORRUPT);
            expect_apartment(mode);
        }
    }));
    EXPECT_TRUE(passes_when_configured(no_component, [&] {
        EXPECT_EQ(failure(date, issuer_with(from_2020())), CO_E_DLLNOTFOUND);
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), HRESULT{S_OK});
        EXPECT_EQ(failure(date, issuer_with(from_2020())), CO_E_DLLNOTFOUND);
        expect_apartment(COINIT_APARTMENTTHREADED);
    }));
}

} // namespace norvane
