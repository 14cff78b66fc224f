#pragma once

#include "items/CertificateItem.h"

#include <ostream>
#include <string_view>

namespace norvane {

/// Writes what the certificate says about itself and where its revocation is told. Throws what the
/// accessors of the item throw.
void report(std::ostream& out, std::string_view source, const CertificateItem& certificate);

} // namespace norvane
