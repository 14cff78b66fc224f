#include "platform/store/contexts.h"
#include "platform/store/guarded.h"

namespace {

using norvane::CertificateCell;
using norvane::CrlCell;
using norvane::SharedCertificate;
using norvane::SharedCrl;

template <class Object>
const typename Object::Context* create_context(DWORD encoding_type, const BYTE* bytes,
                                               DWORD length) noexcept {
    return norvane::guarded([&]() -> const typename Object::Context* {
        auto object = norvane::shared_object<Object>(encoding_type, bytes, length);
        return object ? &object.detach()->cell().context : nullptr;
    });
}

} // namespace

PCCERT_CONTEXT CertCreateCertificateContext(DWORD dwCertEncodingType, const BYTE* pbCertEncoded,
                                            DWORD cbCertEncoded) noexcept {
    return create_context<SharedCertificate>(dwCertEncodingType, pbCertEncoded, cbCertEncoded);
}

PCCERT_CONTEXT CertDuplicateCertificateContext(PCCERT_CONTEXT pCertContext) noexcept {
    return pCertContext == nullptr ? nullptr
                                   : norvane::share_context(CertificateCell::of(pCertContext));
}

BOOL CertFreeCertificateContext(PCCERT_CONTEXT pCertContext) noexcept {
    const norvane::HeldContext<SharedCertificate> held(pCertContext);
    return TRUE;
}

PCCRL_CONTEXT CertCreateCRLContext(DWORD dwCertEncodingType, const BYTE* pbCrlEncoded,
                                   DWORD cbCrlEncoded) noexcept {
    return create_context<SharedCrl>(dwCertEncodingType, pbCrlEncoded, cbCrlEncoded);
}

PCCRL_CONTEXT CertDuplicateCRLContext(PCCRL_CONTEXT pCrlContext) noexcept {
    return pCrlContext == nullptr ? nullptr : norvane::share_context(CrlCell::of(pCrlContext));
}

BOOL CertFreeCRLContext(PCCRL_CONTEXT pCrlContext) noexcept {
    const norvane::HeldContext<SharedCrl> held(pCrlContext);
    return TRUE;
}

BOOL CertFindCertificateInCRL(PCCERT_CONTEXT pCert, PCCRL_CONTEXT pCrlContext, DWORD dwFlags,
                              void* pvReserved, PCRL_ENTRY* ppCrlEntry) noexcept {
    if (ppCrlEntry == nullptr) {
        return norvane::fail(E_INVALIDARG);
    }
    *ppCrlEntry = nullptr;
    if (pCert == nullptr || pCert->pCertInfo == nullptr || pCrlContext == nullptr || dwFlags != 0 ||
        pvReserved != nullptr) {
        return norvane::fail(E_INVALIDARG);
    }
    const CRYPT_INTEGER_BLOB& serial = pCert->pCertInfo->SerialNumber;
    if (serial.pbData == nullptr && serial.cbData != 0) {
        return norvane::fail(E_INVALIDARG);
    }
    return norvane::guarded([&] {
        *ppCrlEntry = CrlCell::of(pCrlContext).object->find_entry(serial);
        return TRUE;
    });
}
