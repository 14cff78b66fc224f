#pragma once

#include "platform/StructureBuffer.h"

#include <norvane/wincrypt.h>

#include <span>

namespace norvane {

/// Decodes an AuthorityKeyIdentifier into a CERT_AUTHORITY_KEY_ID2_INFO with all that it points to
/// behind it. Returns an error code.
[[nodiscard]] DWORD decode_authority_key_id(std::span<const BYTE> encoded,
                                            const StructureBuffer& out) noexcept;

} // namespace norvane
