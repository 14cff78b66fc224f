#include "call/LeftBehind.h"

namespace norvane {
namespace {

void release(PCCERT_CONTEXT context) noexcept { CertFreeCertificateContext(context); }
void release(HCERTSTORE store) noexcept { CertCloseStore(store, 0); }

template <class Handle>
void take_into(std::vector<Handle>& taken, Handle handle) {
    try {
        taken.push_back(handle);
    } catch (...) {
        release(handle);
        throw;
    }
}

} // namespace

LeftBehind::~LeftBehind() {
    for (const PCCERT_CONTEXT context : contexts_) {
        release(context);
    }
    for (auto* const store : stores_) {
        release(store);
    }
}

void LeftBehind::take(PCCERT_CONTEXT context) { take_into(contexts_, context); }
void LeftBehind::take(HCERTSTORE store) { take_into(stores_, store); }

} // namespace norvane
