#include "platform/ForkLocks.h"
#include "platform/NeverDestroyed.h"
#include "platform/WideText.h"
#include "platform/config/Configuration.h"
#include "platform/store/guarded.h"

#include <norvane/wincrypt.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace {

constexpr REGSAM both_views = KEY_WOW64_64KEY | KEY_WOW64_32KEY;
constexpr char separator = '\\';

/// A key that is open, with the path from its root on.
struct Key {
    std::string path;
    REGSAM rights;
};

LSTATUS status(DWORD code) noexcept { return static_cast<LSTATUS>(code); }

/// The root's name in full; empty for any other handle.
std::string_view root_name(HKEY handle) noexcept {
    if (handle == HKEY_LOCAL_MACHINE) {
        return "HKEY_LOCAL_MACHINE";
    }
    return handle == HKEY_CURRENT_USER ? "HKEY_CURRENT_USER" : "";
}

/// The keys that are open in this process, for any thread.
class OpenKeys {
  public:
    [[nodiscard]] HKEY add(Key key) {
        const std::lock_guard lock(mutex_);
        const auto handle = reinterpret_cast<HKEY>(next_handle_);
        keys_.emplace(handle, std::move(key));
        next_handle_ += handle_step;
        return handle;
    }

    [[nodiscard]] std::optional<Key> find(HKEY handle) const {
        if (const std::string_view root = root_name(handle); !root.empty()) {
            return Key{.path = std::string(root), .rights = KEY_READ};
        }
        const std::lock_guard lock(mutex_);
        const auto found = keys_.find(handle);
        return found != keys_.end() ? std::optional(found->second) : std::nullopt;
    }

    [[nodiscard]] bool remove(HKEY handle) {
        const std::lock_guard lock(mutex_);
        return keys_.erase(handle) != 0;
    }

    void visit_lock(norvane::LockVisitor visit) { visit(mutex_); }

  private:
    static constexpr std::uintptr_t handle_step = 4; // the low bits stay clear, as on the platform

    mutable std::mutex mutex_;
    std::map<HKEY, Key> keys_;
    std::uintptr_t next_handle_ = handle_step;
};

norvane::NeverDestroyed<OpenKeys> all_open_keys;

OpenKeys& open_keys() { return all_open_keys.object; }

bool key_exists(std::string path) {
    path += separator;
    const auto& values = norvane::configuration().registry;
    const auto first = values.lower_bound(path);
    return first != values.end() &&
           norvane::equal_ignoring_case(first->first.substr(0, path.size()), path);
}

LSTATUS open_key(HKEY parent_handle, LPCWSTR name, REGSAM rights, HKEY& result) {
    const auto parent = open_keys().find(parent_handle);
    if (!parent) {
        return status(ERROR_INVALID_HANDLE);
    }
    std::string path = parent->path;
    if (name != nullptr && *name != 0) {
        path += separator;
        path += norvane::to_utf8(name);
    }
    if (path.back() == separator) {
        path.pop_back(); // one at the end is allowed
    }
    if (path != parent->path && !key_exists(path)) {
        return status(ERROR_FILE_NOT_FOUND);
    }
    if ((rights & ~(KEY_READ | both_views)) != 0) {
        return status(ERROR_ACCESS_DENIED);
    }
    result = open_keys().add({.path = std::move(path), .rights = rights});
    return status(ERROR_SUCCESS);
}

struct RawValue {
    DWORD type;
    std::string bytes;
};

template <class Number>
std::string bytes_of(Number number) {
    std::string bytes(sizeof number, '\0');
    std::memcpy(bytes.data(), &number, sizeof number);
    return bytes;
}

RawValue raw_value(const norvane::RegistryValue& value) {
    if (const auto* number = std::get_if<std::uint32_t>(&value)) {
        return {REG_DWORD, bytes_of(*number)};
    }
    if (const auto* number = std::get_if<std::uint64_t>(&value)) {
        return {REG_QWORD, bytes_of(*number)};
    }
    const std::u16string text = norvane::to_utf16(std::get<std::string>(value));
    const std::size_t size = (text.size() + 1) * sizeof(WCHAR);
    return {REG_SZ, std::string(reinterpret_cast<const char*>(text.c_str()), size)};
}

LSTATUS query_value(HKEY handle, LPCWSTR name, LPDWORD type, LPBYTE data, LPDWORD size) {
    const auto key = open_keys().find(handle);
    if (!key) {
        return status(ERROR_INVALID_HANDLE);
    }
    if ((key->rights & KEY_QUERY_VALUE) == 0) {
        return status(ERROR_ACCESS_DENIED);
    }
    // A name with a separator would reach into a key below.
    const std::string value_name = norvane::to_utf8(name != nullptr ? name : NORVANE_W(""));
    const auto& values = norvane::configuration().registry;
    const auto found = values.find(key->path + separator + value_name);
    if (found == values.end() || value_name.find(separator) != value_name.npos) {
        return status(ERROR_FILE_NOT_FOUND);
    }
    const RawValue value = raw_value(found->second);
    const auto value_size = static_cast<DWORD>(value.bytes.size());
    const DWORD capacity = data != nullptr ? *size : value_size;
    if (type != nullptr) {
        *type = value.type;
    }
    if (size != nullptr) {
        *size = value_size;
    }
    if (capacity < value_size) {
        return status(ERROR_MORE_DATA);
    }
    if (data != nullptr) {
        std::ranges::copy(value.bytes, data);
    }
    return status(ERROR_SUCCESS);
}

} // namespace

void norvane::visit_open_key_locks(LockVisitor visit) { open_keys().visit_lock(visit); }

LSTATUS RegOpenKeyExW(HKEY hKey, LPCWSTR lpSubKey, DWORD ulOptions, REGSAM samDesired,
                      PHKEY phkResult) noexcept {
    if (phkResult == nullptr || ulOptions != 0 || (samDesired & both_views) == both_views) {
        return status(ERROR_INVALID_PARAMETER);
    }
    try {
        return open_key(hKey, lpSubKey, samDesired, *phkResult);
    } catch (...) {
        return status(norvane::code_of_thrown({.no_memory = ERROR_OUTOFMEMORY}));
    }
}

// NOLINTNEXTLINE(readability-non-const-parameter): the signature is the platform's
LSTATUS RegQueryValueExW(HKEY hKey, LPCWSTR lpValueName, LPDWORD lpReserved, LPDWORD lpType,
                         LPBYTE lpData, LPDWORD lpcbData) noexcept {
    if (lpReserved != nullptr || (lpData != nullptr && lpcbData == nullptr)) {
        return status(ERROR_INVALID_PARAMETER);
    }
    try {
        return query_value(hKey, lpValueName, lpType, lpData, lpcbData);
    } catch (...) {
        return status(norvane::code_of_thrown({.no_memory = ERROR_OUTOFMEMORY}));
    }
}

LSTATUS RegCloseKey(HKEY hKey) noexcept {
    const bool closed = !root_name(hKey).empty() || open_keys().remove(hKey);
    return status(closed ? ERROR_SUCCESS : ERROR_INVALID_HANDLE);
}
