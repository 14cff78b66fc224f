// A revocation module whose answers the test gives. Each file built from scripted_module.cpp has a
// Script of its own.
#pragma once

#include <norvane/wincrypt.h>

#include <functional>

namespace norvane::testing {

// What the module was asked, and where its answer goes.
struct Question {
    PCCERT_CONTEXT certificate;
    DWORD flags;
    CERT_REVOCATION_PARA& para;
    CERT_REVOCATION_STATUS& status;
};

struct Script {
    std::function<BOOL(const Question&)> check;
    std::function<BOOL(DWORD reason)> entry; // none: TRUE
};

} // namespace norvane::testing
