#pragma once

#include <norvane/wincrypt.h>

#include <string>
#include <utility>

namespace norvane {

/// A store that a retrieval brought, closed at the end; or none.
class RetrievedStore {
  public:
    explicit RetrievedStore(HCERTSTORE handle = nullptr) noexcept : handle_(handle) {}
    RetrievedStore(RetrievedStore&& other) noexcept : handle_(other.release()) {}
    RetrievedStore& operator=(RetrievedStore&&) = delete;
    ~RetrievedStore() {
        if (handle_ != nullptr) {
            CertCloseStore(handle_, 0);
        }
    }

    [[nodiscard]] HCERTSTORE handle() const noexcept { return handle_; }
    /// The caller closes it.
    [[nodiscard]] HCERTSTORE release() noexcept { return std::exchange(handle_, nullptr); }

  private:
    HCERTSTORE handle_;
};

/// The objects of a kind (CONTEXT_OID_...) that a URL delivers; none if the retrieval fails, which
/// leaves no trace in the last error.
///
/// What may go over the wire is charged to the question, with the milliseconds that it takes, and
/// one at least. Its time-out is no longer than what the question has left. Throws PlatformFailure
/// if the retrieval fails because the process does, and QuotaSpent.
///
/// @param flags 0 or CRYPT_CACHE_ONLY_RETRIEVAL.
/// @param timeout milliseconds; 0 leaves it to the platform.
[[nodiscard]] RetrievedStore retrieve_store(const std::string& url, LPCSTR kind, DWORD flags,
                                            DWORD timeout);

} // namespace norvane
