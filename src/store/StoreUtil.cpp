#include "store/StoreUtil.h"

#include "call/Question.h"
#include "values/ProcessFailure.h"

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

/// Where a search stands. The context is freed if the search ends at it, and by the platform when
/// the search moves on.
template <class Objects, class Context>
class CurrentContext {
  public:
    CurrentContext() = default;
    CurrentContext(const CurrentContext&) = delete;
    CurrentContext& operator=(const CurrentContext&) = delete;
    ~CurrentContext() {
        if (context_ != nullptr) {
            Objects::free(context_);
        }
    }

    /// The next object that the store shows, null at the end. Throws PlatformFailure if that is
    /// the end for want of something else, and QuotaSpent.
    [[nodiscard]] const Context* next(HCERTSTORE store, const StoreFindParam<Context>& param) {
        context_ = platform_answer(
            [&] { return Objects::next(store, param, std::exchange(context_, nullptr)); },
            source_module::store_util, __LINE__);
        if (context_ != nullptr) {
            charge(Resource::shown_objects);
        }
        return context_;
    }

  private:
    const Context* context_ = nullptr;
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
    CurrentContext<Objects, Context> current;
    while (const Context* const context = current.next(store, param)) {
        if (is_kept(param, context)) {
            visit(Objects::encoded(*context));
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
