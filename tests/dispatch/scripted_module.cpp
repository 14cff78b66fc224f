#include "ScriptedModule.h"

#include <gtest/gtest.h>

#define NORVANE_TEST_EXPORT extern "C" __attribute__((visibility("default")))

NORVANE_TEST_EXPORT norvane::testing::Script script;
norvane::testing::Script script;

NORVANE_TEST_EXPORT BOOL CertDllVerifyRevocation(DWORD, DWORD, DWORD count, PVOID contexts[],
                                                 DWORD flags, PCERT_REVOCATION_PARA para,
                                                 PCERT_REVOCATION_STATUS status) {
    EXPECT_EQ(count, 1);
    EXPECT_EQ(status->cbSize, sizeof(CERT_REVOCATION_STATUS));
    return script.check({static_cast<PCCERT_CONTEXT>(contexts[0]), flags, *para, *status});
}

NORVANE_TEST_EXPORT BOOL DllMain(HINSTANCE, DWORD reason, LPVOID) {
    return script.entry ? script.entry(reason) : TRUE;
}
