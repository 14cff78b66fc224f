#include "store/StoreUtil.h"

#include "values/Exceptions.h"

#include <cstddef>
#include <stdexcept>
#include <utility>

namespace norvane {
namespace {

constexpr std::size_t max_list_size = 0xAAAAAAAAAAAAAAA;

void append(std::list<CACMPT_BLOB>& out, ByteView encoded) {
    if (out.size() >= max_list_size) {
        throw std::length_error("list<T> too long");
    }
    out.emplace_back(encoded.data, encoded.length);
}

/// The platform's calls for one kind of object.
struct Certificates {
    static const _CERT_CONTEXT* next(HCERTSTORE store, const StoreFindParam<_CERT_CONTEXT>& param,
                                     const _CERT_CONTEXT* previous) {
        return CertFindCertificateInStore(store, certificate_encoding, 0, param.find_type,
                                          param.find_para, previous);
    }
    static void free(const _CERT_CONTEXT* certificate) { CertFreeCertificateContext(certificate); }
    static ByteView encoded(const _CERT_CONTEXT& certificate) {
        return {certificate.pbCertEncoded, certificate.cbCertEncoded};
    }
};

struct Crls {
    static const _CRL_CONTEXT* next(HCERTSTORE store, const StoreFindParam<_CRL_CONTEXT>& param,
                                    const _CRL_CONTEXT* previous) {
        return CertFindCRLInStore(store, certificate_encoding, 0, param.find_type, param.find_para,
                                  previous);
    }
    static void free(const _CRL_CONTEXT* crl) { CertFreeCRLContext(crl); }
    static ByteView encoded(const _CRL_CONTEXT& crl) {
        return {crl.pbCrlEncoded, crl.cbCrlEncoded};
    }
};

/// Frees a context if the search ends at it.
template <class Objects, class Context>
class CurrentContext {
  public:
    explicit CurrentContext(const Context* context) : context_(context) {}
    CurrentContext(const CurrentContext&) = delete;
    CurrentContext& operator=(const CurrentContext&) = delete;
    ~CurrentContext() {
        if (context_ != nullptr) {
            Objects::free(context_);
        }
    }

    [[nodiscard]] const Context* get() const { return context_; }
    /// The platform frees the present one.
    void move_on(HCERTSTORE store, const StoreFindParam<Context>& param) {
        context_ = Objects::next(store, param, std::exchange(context_, nullptr));
    }

  private:
    const Context* context_;
};

template <class Context>
bool is_kept(StoreFindParam<Context>& param, const Context* context) {
    try {
        return param.match(context);
    } catch (const Asn1Exception&) {
        return false; // Not what the predicate can read, and so not what is sought.
    }
}

template <class Objects, class Context, class Visit>
void visit_all(HCERTSTORE store, StoreFindParam<Context>& param, Visit visit) {
    CurrentContext<Objects, Context> context(Objects::next(store, param, nullptr));
    for (; context.get() != nullptr; context.move_on(store, param)) {
        if (is_kept(param, context.get())) {
            visit(Objects::encoded(*context.get()));
        }
    }
}

} // namespace

void store_find_all(std::list<CACMPT_BLOB>& out, HCERTSTORE store,
                    StoreFindParam<_CERT_CONTEXT>& param) {
    visit_all<Certificates>(store, param, [&out](ByteView encoded) { append(out, encoded); });
}

void store_find_all_crls(std::list<CACMPT_BLOB>& out, HCERTSTORE store,
                         StoreFindParam<_CRL_CONTEXT>& param) {
    visit_all<Crls>(store, param, [&out](ByteView encoded) { append(out, encoded); });
}

void store_visit_crls(HCERTSTORE store, StoreFindParam<_CRL_CONTEXT>& param,
                      const std::function<void(ByteView encoded)>& visit) {
    visit_all<Crls>(store, param, visit);
}

} // namespace norvane
