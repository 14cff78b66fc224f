#pragma once

#include <norvane/wincrypt.h>

namespace norvane {

/// Notes the CRLs on which a verdict rests, so that no older ones of their scopes are served any
/// more. Only where there is a cache already: a check that stays local makes none. That they cannot
/// be noted costs nothing else.
void note_verdict(const CERT_REVOCATION_CRL_INFO& crls) noexcept;

} // namespace norvane
