#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include <openssl/types.h>

namespace norvane {

/// SHA-256 (FIPS 180-4).
using Digest = std::array<std::uint8_t, 32>;

/// Takes bytes piece by piece. Throws std::bad_alloc if libcrypto fails, which it does for want of
/// memory only.
class Digester {
  public:
    Digester();

    Digester& add(std::span<const std::uint8_t> bytes);
    Digester& add(std::string_view text) {
        return add({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    }
    [[nodiscard]] Digest finish();

  private:
    struct Release {
        void operator()(EVP_MD_CTX* context) const noexcept;
    };
    std::unique_ptr<EVP_MD_CTX, Release> context_;
};

/// In small hexadecimal digits.
[[nodiscard]] std::string to_hex(const Digest& digest);

} // namespace norvane
