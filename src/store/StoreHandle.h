#pragma once

#include <norvane/wincrypt.h>

#include <functional>
#include <set>

namespace norvane {

/// How the encoding is named in every call to the platform.
inline constexpr DWORD certificate_encoding = X509_ASN_ENCODING | PKCS_7_ASN_ENCODING;

/// How system stores are opened: 0x1C000.
inline constexpr DWORD system_store_flags =
    CERT_SYSTEM_STORE_CURRENT_USER | CERT_STORE_READONLY_FLAG | CERT_STORE_OPEN_EXISTING_FLAG;

/// One reference to a store of the platform, or none, and whether its certificates are trusted. It
/// belongs to one thread.
class StoreHandle {
  public:
    StoreHandle() = default;
    /// Takes a reference of its own. Throws CAException "Store handle is NULL." for null, and
    /// CryptException for what is no store.
    explicit StoreHandle(HCERTSTORE handle);
    /// The same for the handle of `other`.
    StoreHandle(const StoreHandle& other);
    StoreHandle& operator=(const StoreHandle&) = delete;
    ~StoreHandle();

    [[nodiscard]] HCERTSTORE handle() const noexcept { return handle_; }
    /// Set only by opening the system store of exactly that name.
    [[nodiscard]] bool is_root() const noexcept { return is_root_; }

    friend bool open_system_store(StoreHandle& store, LPCWSTR name, DWORD flags);

  private:
    HCERTSTORE handle_ = nullptr;
    bool is_root_ = false;
};

/// Opens the system store `name` with `flags` and tells whether it could be opened; the last error
/// is the platform's. It is a Root store if its name is "Root" in just this case, though the
/// platform opens it by any. Throws CAException "Store already opened." if `store` is.
[[nodiscard]] bool open_system_store(StoreHandle& store, LPCWSTR name, DWORD flags);

/// The order of searches: Root stores first, then the store that was opened last. It decides which
/// of equally good candidates is met first.
struct StoreOrder {
    [[nodiscard]] bool operator()(const StoreHandle& a, const StoreHandle& b) const noexcept {
        return a.is_root() != b.is_root() ? a.is_root() : std::greater{}(a.handle(), b.handle());
    }
};

/// A store is in it once for each mark.
using StoreHandleSet = std::set<StoreHandle, StoreOrder>;

} // namespace norvane
