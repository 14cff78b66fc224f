#pragma once

#include <norvane/wincrypt.h>

namespace norvane {

/// Marks a certificate as being checked on this thread, for the life of the object. Marks end in
/// the reverse order of their beginning.
///
/// Each call of a module decides on its own and knows nothing of those outside it, so two CAs that
/// sign each other's CRLs would ask for each other until the stack ends.
class CertificateUnderCheck {
  public:
    /// @param certificate outlives the mark.
    explicit CertificateUnderCheck(const CERT_CONTEXT& certificate) noexcept;
    CertificateUnderCheck(const CertificateUnderCheck&) = delete;
    CertificateUnderCheck& operator=(const CertificateUnderCheck&) = delete;
    ~CertificateUnderCheck();

    /// Whether a certificate of the same bytes is marked on the calling thread.
    [[nodiscard]] static bool is_marked(const CERT_CONTEXT& certificate) noexcept;

  private:
    const CERT_CONTEXT& certificate_;
    const CertificateUnderCheck* outer_;
};

} // namespace norvane
