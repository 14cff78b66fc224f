#include "store/StoreHandle.h"

#include "values/ProcessFailure.h"

#include <string_view>

namespace norvane {
namespace {

constexpr std::basic_string_view<WCHAR> root_name = NORVANE_W("Root");

HCERTSTORE duplicate(HCERTSTORE handle) {
    if (handle == nullptr) {
        throw CAException("Store handle is NULL.", source_module::store_util, __LINE__);
    }
    HCERTSTORE same = CertDuplicateStore(handle);
    if (same == nullptr) {
        throw_platform_error(GetLastError(), source_module::store_util, __LINE__);
    }
    return same;
}

} // namespace

StoreHandle::StoreHandle(HCERTSTORE handle) : handle_(duplicate(handle)) {}

StoreHandle::StoreHandle(const StoreHandle& other)
    : handle_(duplicate(other.handle_)), is_root_(other.is_root_) {}

StoreHandle::~StoreHandle() {
    if (handle_ != nullptr) {
        CertCloseStore(handle_, 0);
    }
}

bool open_system_store(StoreHandle& store, LPCWSTR name, DWORD flags) {
    if (store.handle_ != nullptr) {
        throw CAException("Store already opened.", source_module::store_util, __LINE__);
    }
    store.is_root_ = name == root_name;
    store.handle_ =
        platform_answer([&] { return CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, flags, name); },
                        source_module::store_util, __LINE__);
    return store.handle_ != nullptr;
}

} // namespace norvane
