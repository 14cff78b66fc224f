#pragma once

#include "items/CertificateItem.h"
#include "values/Date.h"

#include <norvane/wincrypt.h>

#include <atomic>
#include <cstdint>

namespace norvane {

/// Whether each link of a path is tested against the issuer's private key usage period.
enum class StrictPkup : std::uint32_t { unread = 0, off = 1, on = 2 };

/// The switch as this process has read it. Threads that find it unread all read the same answer and
/// write it, so it needs no order and no lock. Once read it stays: a later change of the registry
/// has no effect.
extern std::atomic<StrictPkup> strict_pkup_state;

/// Reads four bytes, whatever their type, of a value of HKEY_LOCAL_MACHINE,
/// "SOFTWARE\Norvane\PkiValidator", in the registry's view for 32-bit programs. A shorter value
/// leaves zeros behind. False if a step fails, the closing of the key included; throws
/// PlatformFailure if that is the fault of the process.
[[nodiscard]] bool read_pkiv_dword(LPCWSTR name, std::uint32_t* value);

/// Whether the switch is on, which the registry value `StrictPkupCheck` tells by not being 0. Only
/// then is private_key_usage_check to be called. Throws PlatformFailure, and remembers nothing
/// then.
[[nodiscard]] bool strict_pkup_is_on();

/// Asks the component for private key usage periods whether `date`, when a child of the issuer came
/// into being, lies in the period of the issuer's key. The component is given local time.
///
/// False only if the component says so. Throws CryptException if COM, the component or a platform
/// function fails, and as CertificateItem::encoded does.
[[nodiscard]] bool private_key_usage_check(const CACMPT_Date& date, const CertificateItem& issuer);

} // namespace norvane
