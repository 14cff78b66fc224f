#include "platform/retrieval/note_verdict.h"

#include "platform/retrieval/CacheFolder.h"
#include "platform/retrieval/CrlMarks.h"
#include "platform/retrieval/RetrievalOutcome.h"

#include <ctime>

namespace norvane {

void note_verdict(const CERT_REVOCATION_CRL_INFO& crls) noexcept {
    // Whatever it throws, the verdict stands.
    static_cast<void>(outcome_of([&crls]() -> RetrievalOutcome {
        const CacheFolder& folder = CacheFolder::instance();
        for (PCCRL_CONTEXT crl : {crls.pBaseCrlContext, crls.pDeltaCrlContext}) {
            if (crl != nullptr && crl->pCrlInfo != nullptr && folder.is_usable()) {
                CrlMarks(folder).note_verified(mark_of(*crl->pCrlInfo), std::time(nullptr));
            }
        }
        return {};
    }));
}

} // namespace norvane
