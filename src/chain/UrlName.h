#pragma once

#include "asn1/GeneralName.h"

#include <string>

namespace norvane {

/// The text of a uniformResourceIdentifier.
[[nodiscard]] inline std::string url_text(const ASN1T_GeneralName& name) {
    return {reinterpret_cast<const char*>(name.value.data), name.value.length};
}

} // namespace norvane
