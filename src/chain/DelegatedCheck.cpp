#include "chain/DelegatedCheck.h"

#include "call/Question.h"
#include "chain/PathFailure.h"
#include "chain/RecordParts.h"
#include "chain/RetrievalClock.h"
#include "chain/RunStatus.h"
#include "values/CompareTimes.h"

#include <norvane/wincrypt.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>
#include <vector>

namespace norvane {
namespace {

[[noreturn]] void throw_last_error(std::uint32_t line) {
    throw_platform_error(GetLastError(), source_module::chain_validator, line);
}

/// A certificate context that is freed if the question ends in an exception, and deliberately left
/// behind after an answer.
class QuestionContext {
  public:
    explicit QuestionContext(const CertificateItem& item) {
        const CACMPT_BLOB& encoded = item.encoded();
        context_ = CertCreateCertificateContext(certificate_encoding, encoded.data, encoded.length);
        if (context_ == nullptr) {
            throw_last_error(__LINE__);
        }
    }
    QuestionContext(const QuestionContext&) = delete;
    QuestionContext& operator=(const QuestionContext&) = delete;
    ~QuestionContext() {
        if (context_ != nullptr) {
            CertFreeCertificateContext(context_);
        }
    }

    [[nodiscard]] PCCERT_CONTEXT get() const { return context_; }
    void leave() { leave_behind(std::exchange(context_, nullptr)); }

  private:
    PCCERT_CONTEXT context_ = nullptr;
};

/// A new store, with a second reference of its own, which is always closed. The first one is closed
/// if the question ends in an exception, and deliberately left behind after an answer.
class QuestionStore {
  public:
    explicit QuestionStore(LPCSTR provider) : first_(CertOpenStore(provider, 0, 0, 0, nullptr)) {
        if (first_ == nullptr) {
            throw_last_error(__LINE__);
        }
        second_ = CertDuplicateStore(first_);
    }
    QuestionStore(const QuestionStore&) = delete;
    QuestionStore& operator=(const QuestionStore&) = delete;
    ~QuestionStore() {
        CertCloseStore(second_, 0);
        if (first_ != nullptr) {
            CertCloseStore(first_, 0);
        }
    }

    [[nodiscard]] HCERTSTORE get() const { return second_; }
    void leave() { leave_behind(std::exchange(first_, nullptr)); }

  private:
    HCERTSTORE first_;
    HCERTSTORE second_;
};

void add_extra_certificates(HCERTSTORE store, const ChainValidator& chain) {
    for (const ItemCache::value_type* const certificate : chain.extra_certificates) {
        const CACMPT_BLOB& encoded = certificate->first.encoded();
        if (!CertAddEncodedCertificateToStore(store, certificate_encoding, encoded.data,
                                              encoded.length, CERT_STORE_ADD_ALWAYS, nullptr)) {
            throw_last_error(__LINE__);
        }
    }
}

void add_extra_crls(HCERTSTORE store, const ChainValidator& chain) {
    for (const CRLItem* const crl : chain.extra_crls) {
        const CACMPT_BLOB& encoded = crl->encoded();
        if (!CertAddEncodedCRLToStore(store, certificate_encoding, encoded.data, encoded.length,
                                      CERT_STORE_ADD_ALWAYS, nullptr)) {
            throw_last_error(__LINE__);
        }
    }
}

void add_to_collection(HCERTSTORE collection, HCERTSTORE store) {
    if (!CertAddStoreToCollection(collection, store, 0, 0)) {
        throw_last_error(__LINE__);
    }
}

std::uint32_t answer_of(BOOL is_good, const CERT_REVOCATION_STATUS& status) {
    constexpr DWORD first_reason = 1;
    constexpr DWORD last_reason = 6;
    if (is_good) {
        return CHAIN_STATUS_GOOD;
    }
    if (status.dwError != static_cast<DWORD>(CRYPT_E_REVOKED)) {
        return CHAIN_STATUS_NO_CHECK;
    }
    const bool is_known = status.dwReason >= first_reason && status.dwReason <= last_reason;
    return is_known ? status.dwReason : 0;
}

/// CHAIN_STATUS_GOOD, CHAIN_STATUS_NO_CHECK or a CRL reason code from 0 to 6.
std::uint32_t verify_by_other_providers(ChainValidator& chain, Chain::Position element,
                                        Chain::Position issuer) {
    QuestionContext subject(element->item());
    QuestionContext issuer_hint(issuer->item());

    const bool accumulative = (chain.chain_flags & chain_accumulative_timeout) != 0;
    DWORD flags =
        (chain.chain_flags & chain_cache_only) != 0 ? CERT_VERIFY_CACHE_ONLY_BASED_REVOCATION : 0;
    if (accumulative) {
        flags |= CERT_VERIFY_REV_ACCUMULATIVE_TIMEOUT_FLAG;
    }

    CERT_REVOCATION_PARA para{};
    para.cbSize = sizeof para;
    para.pIssuerCert = issuer_hint.get();

    QuestionStore certificates(CERT_STORE_PROV_MEMORY);
    add_extra_certificates(certificates.get(), chain);
    std::vector<HCERTSTORE> cert_stores{certificates.get()};
    for (const StoreHandle& store : chain.cert_stores) {
        cert_stores.push_back(store.handle());
    }
    para.cCertStore = static_cast<DWORD>(cert_stores.size());
    para.rgCertStore = cert_stores.data();

    QuestionStore crls(CERT_STORE_PROV_MEMORY);
    add_extra_crls(crls.get(), chain);
    QuestionStore collection(CERT_STORE_PROV_COLLECTION);
    add_to_collection(collection.get(), crls.get());
    for (const StoreHandle& store : chain.crl_stores) {
        add_to_collection(collection.get(), store.handle());
    }
    para.hCrlStore = collection.get();

    const SYSTEMTIME time_fields = system_time(chain.verify_time);
    FILETIME time_to_use{};
    if (!SystemTimeToFileTime(&time_fields, &time_to_use)) {
        throw_last_error(__LINE__);
    }
    para.pftTimeToUse = &time_to_use;

    if (!accumulative) {
        para.dwUrlRetrievalTimeout = whole_milliseconds(chain.retrieval_timeout);
    } else if (chain.retrieval_timeout > chain.timeout_spent) {
        para.dwUrlRetrievalTimeout =
            whole_milliseconds(difference(chain.retrieval_timeout, chain.timeout_spent));
    } else {
        // With the budget spent the providers may still read their caches.
        para.dwUrlRetrievalTimeout = 0;
        flags |= CERT_VERIFY_CACHE_ONLY_BASED_REVOCATION;
    }

    CERT_REVOCATION_STATUS status{};
    status.cbSize = sizeof status;
    void* contexts[] = {const_cast<CERT_CONTEXT*>(subject.get())};

    const CACMPT_Date start = retrieval_clock();
    const BOOL is_good = CertVerifyRevocation(certificate_encoding, CERT_CONTEXT_REVOCATION_TYPE,
                                              static_cast<DWORD>(std::size(contexts)), contexts,
                                              flags, &para, &status);
    if (accumulative) {
        add_to(chain.timeout_spent, time_since(start));
    }

    // Whoever could not look because the process failed has said nothing about the certificate.
    require_health();
    if (!is_good) {
        require_no_process_error(status.dwError, source_module::chain_validator, __LINE__);
    }

    subject.leave();
    issuer_hint.leave();
    certificates.leave();
    crls.leave();
    collection.leave();
    return answer_of(is_good, status);
}

bool is_wanted(const ChainValidator& chain, Chain::Position element) {
    const std::uint32_t mode = chain.chain_flags & chain_revocation_mask;
    const Chain::Items& elements = chain.path.items;
    if (std::next(element) == chain.path.items.end()) {
        return mode != 0;
    }
    if (&*element == &elements.front()) {
        return mode == chain_revocation_whole_path;
    }
    return mode == chain_revocation_whole_path || mode == chain_revocation_all_but_root;
}

} // namespace

bool delegated_revocation_check(ChainValidator& chain, Chain::Position element,
                                Chain::Position issuer) {
    // The run's own subject: whoever needs it to be good runs in a circle.
    if (chain.revocation_in_progress.contains(&element->item())) {
        note(event::member_under_check_already, told(element->item()));
        record_failure(chain, REVOCATION_STATUS_UNKNOWN, element);
        return false;
    }
    if (!is_wanted(chain, element) || element->info().revocation_good) {
        return true;
    }
    Branch branch(event::member_check, told(element->item()));
    const std::uint32_t answer = verify_by_other_providers(chain, element, issuer);
    switch (answer) {
    case CHAIN_STATUS_GOOD:
        branch.end(event::member_good);
        return true;
    case CHAIN_STATUS_NO_CHECK:
        branch.end(event::member_not_checked, told(element->item()));
        record_failure(chain, REVOCATION_STATUS_UNKNOWN, element);
        return false;
    default:
        branch.end(event::member_revoked, told(element->item()), record_value("reason", answer));
        record_revoked(chain, IS_REVOKED, answer, element);
        return false;
    }
}

} // namespace norvane
