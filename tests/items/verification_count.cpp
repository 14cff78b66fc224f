// Counts verifications at the platform's door. The linker leads here every look-up of a hash's
// identifier, of which each verification makes one.
#include "Material.h"

namespace norvane {
namespace {

unsigned verifications = 0;

} // namespace

unsigned verification_count() { return verifications; }

} // namespace norvane

extern "C" {
LPCSTR real_CertAlgIdToOID(DWORD algorithm) __asm__("__real_norvane_CertAlgIdToOID");
LPCSTR counted_CertAlgIdToOID(DWORD algorithm) __asm__("__wrap_norvane_CertAlgIdToOID");

LPCSTR counted_CertAlgIdToOID(DWORD algorithm) {
    ++norvane::verifications;
    return real_CertAlgIdToOID(algorithm);
}
}
