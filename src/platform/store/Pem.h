#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace norvane {

/// Reads the textual encoding of RFC 7468 block by block. Text around the blocks is passed over.
class PemReader {
  public:
    /// A block: what stands between the boundaries, and the words on them.
    struct Block {
        std::string_view label;
        std::string_view body;
    };

    /// Views `text`, which must outlive the reader and the blocks.
    explicit PemReader(std::string_view text) : rest_(text) {}

    /// The next block, or nothing behind the last one; or, in words, what is wrong with it.
    [[nodiscard]] std::variant<std::optional<Block>, std::string> next();

  private:
    [[nodiscard]] std::string_view take_line();

    std::string_view rest_;
};

/// The octets of a block: Base64 with white space anywhere and padding at the end. Nothing if the
/// body is anything else.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> decode_pem_body(std::string_view body);

} // namespace norvane
