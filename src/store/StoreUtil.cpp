#include "store/StoreUtil.h"

#include "values/Exceptions.h"

#include <cstddef>
#include <stdexcept>

namespace norvane {
namespace {

constexpr std::size_t max_list_size = 0xAAAAAAAAAAAAAAA;

void append(std::list<CACMPT_BLOB>& out, const BYTE* bytes, DWORD length) {
    if (out.size() >= max_list_size) {
        throw std::length_error("list<T> too long");
    }
    out.emplace_back(bytes, length);
}

/// The platform's calls for one kind of object.
struct Certificates {
    static const _CERT_CONTEXT* next(HCERTSTORE store, const StoreFindParam<_CERT_CONTEXT>& param,
                                     const _CERT_CONTEXT* previous) {
        return CertFindCertificateInStore(store, certificate_encoding, 0, param.find_type,
                                          param.find_para, previous);
    }
    static void free(const _CERT_CONTEXT* certificate) { CertFreeCertificateContext(certificate); }
    static void append_to(std::list<CACMPT_BLOB>& out, const _CERT_CONTEXT& certificate) {
        append(out, certificate.pbCertEncoded, certificate.cbCertEncoded);
    }
};

struct Crls {
    static const _CRL_CONTEXT* next(HCERTSTORE store, const StoreFindParam<_CRL_CONTEXT>& param,
                                    const _CRL_CONTEXT* previous) {
        return CertFindCRLInStore(store, certificate_encoding, 0, param.find_type, param.find_para,
                                  previous);
    }
    static void free(const _CRL_CONTEXT* crl) { CertFreeCRLContext(crl); }
    static void append_to(std::list<CACMPT_BLOB>& out, const _CRL_CONTEXT& crl) {
        append(out, crl.pbCrlEncoded, crl.cbCrlEncoded);
    }
};

template <class Objects, class Context>
void find_all(std::list<CACMPT_BLOB>& out, HCERTSTORE store, StoreFindParam<Context>& param) {
    const Context* context = Objects::next(store, param, nullptr);
    while (context != nullptr) {
        try {
            if (param.match(context)) {
                Objects::append_to(out, *context);
            }
        } catch (const Asn1Exception&) {
            // Not what the predicate can read, and so not what is sought.
        } catch (...) {
            Objects::free(context);
            throw;
        }
        context = Objects::next(store, param, context);
    }
}

} // namespace

void store_find_all(std::list<CACMPT_BLOB>& out, HCERTSTORE store,
                    StoreFindParam<_CERT_CONTEXT>& param) {
    find_all<Certificates>(out, store, param);
}

void store_find_all_crls(std::list<CACMPT_BLOB>& out, HCERTSTORE store,
                         StoreFindParam<_CRL_CONTEXT>& param) {
    find_all<Crls>(out, store, param);
}

} // namespace norvane
