#include "platform/dispatch/CertificateUnderCheck.h"

#include <algorithm>
#include <span>

namespace norvane {
namespace {

constinit thread_local const CertificateUnderCheck* innermost = nullptr;

bool same_bytes(const CERT_CONTEXT& one, const CERT_CONTEXT& other) noexcept {
    return std::ranges::equal(std::span(one.pbCertEncoded, one.cbCertEncoded),
                              std::span(other.pbCertEncoded, other.cbCertEncoded));
}

} // namespace

CertificateUnderCheck::CertificateUnderCheck(const CERT_CONTEXT& certificate) noexcept
    : certificate_(certificate), outer_(innermost) {
    innermost = this;
}

CertificateUnderCheck::~CertificateUnderCheck() { innermost = outer_; }

bool CertificateUnderCheck::is_marked(const CERT_CONTEXT& certificate) noexcept {
    for (const auto* mark = innermost; mark != nullptr; mark = mark->outer_) {
        if (same_bytes(mark->certificate_, certificate)) {
            return true;
        }
    }
    return false;
}

} // namespace norvane
