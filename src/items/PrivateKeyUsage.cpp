#include "items/PrivateKeyUsage.h"

#include "values/PkivKey.h"
#include "values/ProcessFailure.h"

#include <norvane/platform/pkup.h>

#include <memory>

namespace norvane {
namespace {

constexpr LPCWSTR strict_pkup_value = NORVANE_W("StrictPkupCheck");

constexpr DWORD certificate_encoding = X509_ASN_ENCODING | PKCS_7_ASN_ENCODING;
constexpr DWORD any_server =
    CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER;
static_assert(any_server == 23);

/// For functions of the registry, which answer an error code.
bool succeeded(LSTATUS status, std::uint32_t line) {
    require_no_process_error(static_cast<DWORD>(status), source_module::chain_base, line);
    return status == ERROR_SUCCESS;
}

void require_success(HRESULT result, std::uint32_t line) {
    if (FAILED(result)) {
        throw_platform_error(static_cast<DWORD>(result), source_module::chain_base, line);
    }
}

/// The calling thread in COM, in whatever mode it can be entered.
class ComApartment {
  public:
    ComApartment() {
        HRESULT result = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        if (FAILED(result)) {
            result = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        }
        require_success(result, __LINE__);
    }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
    ~ComApartment() { CoUninitialize(); }
};

struct ReleaseObject {
    void operator()(IUnknown* object) const { object->Release(); }
};

struct FreeContext {
    void operator()(PCCERT_CONTEXT context) const { CertFreeCertificateContext(context); }
};

/// A VARIANT that is cleared at the end.
struct OwnedVariant {
    OwnedVariant() = default;
    OwnedVariant(const OwnedVariant&) = delete;
    OwnedVariant& operator=(const OwnedVariant&) = delete;
    ~OwnedVariant() { VariantClear(&value); }

    VARIANT value{};
};

struct LocalDate {
    DATE value = 0.0;      ///< 0.0 if the date could not be turned into one
    bool is_exact = false; ///< turned back, it gives the same second
};

bool same_second(const SYSTEMTIME& a, const SYSTEMTIME& b) {
    return a.wYear == b.wYear && a.wMonth == b.wMonth && a.wDay == b.wDay && a.wHour == b.wHour &&
           a.wMinute == b.wMinute && a.wSecond == b.wSecond;
}

LocalDate local_date(const CACMPT_Date& date) {
    LocalDate result;
    const FILETIME time = to_file_time(date);
    FILETIME local_time{};
    SYSTEMTIME fields{};
    if (!FileTimeToLocalFileTime(&time, &local_time) ||
        !FileTimeToSystemTime(&local_time, &fields) ||
        !SystemTimeToVariantTime(&fields, &result.value)) {
        return result;
    }
    SYSTEMTIME fields_again{};
    result.is_exact = VariantTimeToSystemTime(result.value, &fields_again) != FALSE &&
                      same_second(fields, fields_again);
    return result;
}

} // namespace

constinit std::atomic<StrictPkup> strict_pkup_state{StrictPkup::unread};

bool read_pkiv_dword(LPCWSTR name, std::uint32_t* value) {
    HKEY key = nullptr;
    if (!succeeded(RegOpenKeyExW(HKEY_LOCAL_MACHINE, pkiv_key, 0, pkiv_key_access, &key),
                   __LINE__)) {
        return false;
    }
    DWORD number = 0;
    DWORD size = sizeof number;
    const LSTATUS queried =
        RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(&number), &size);
    const LSTATUS closed = RegCloseKey(key);
    *value = number;
    return succeeded(queried, __LINE__) && succeeded(closed, __LINE__);
}

bool strict_pkup_is_on() {
    StrictPkup state = strict_pkup_state.load(std::memory_order_relaxed);
    if (state == StrictPkup::unread) {
        std::uint32_t value = 0;
        state = read_pkiv_dword(strict_pkup_value, &value) && value != 0 ? StrictPkup::on
                                                                         : StrictPkup::off;
        strict_pkup_state.store(state, std::memory_order_relaxed);
    }
    return state == StrictPkup::on;
}

bool private_key_usage_check(const CACMPT_Date& date, const CertificateItem& issuer) {
    // What lives here goes in the reverse order on every way out.
    const ComApartment apartment;
    std::unique_ptr<IPrivateKeyUsageChecker, ReleaseObject> checker;
    OwnedVariant certificate;
    std::unique_ptr<const CERT_CONTEXT, FreeContext> context;

    void* object = nullptr;
    require_success(CoCreateInstance(CLSID_PrivateKeyUsageChecker, nullptr, any_server,
                                     IID_IPrivateKeyUsageChecker, &object),
                    __LINE__);
    checker.reset(static_cast<IPrivateKeyUsageChecker*>(object));

    const CACMPT_BLOB& encoded = issuer.encoded();
    context.reset(CertCreateCertificateContext(certificate_encoding, encoded.data, encoded.length));
    if (context == nullptr) {
        throw_platform_error(GetLastError(), source_module::chain_base, __LINE__);
    }
    certificate.value.vt = VT_UI8;
    certificate.value.ullVal = reinterpret_cast<std::uintptr_t>(context.get());

    // Whether the date is exact is deliberately not looked at: a date that does not survive goes to
    // the component all the same.
    const LocalDate local = local_date(date);
    VARIANT_BOOL usable = 0;
    require_success(checker->Check(certificate.value, local.value, &usable), __LINE__);

    if (!CertFreeCertificateContext(context.release())) {
        throw_platform_error(GetLastError(), source_module::chain_base, __LINE__);
    }
    return usable != 0;
}

} // namespace norvane
