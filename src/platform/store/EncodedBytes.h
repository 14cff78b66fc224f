#pragma once

#include "asn1/ByteView.h"
#include "asn1/LargePages.h"

#include <algorithm>
#include <cstdint>
#include <memory>

namespace norvane {

/// An encoding in a block of its own, which goes from one owner to the next without being copied.
struct EncodedBytes {
    std::unique_ptr<std::uint8_t[]> octets;
    std::uint32_t length = 0;

    [[nodiscard]] static EncodedBytes copy_of(ByteView bytes) {
        EncodedBytes copy{std::make_unique_for_overwrite<std::uint8_t[]>(bytes.length),
                          bytes.length};
        prefer_large_pages(copy.octets.get(), copy.length);
        std::copy(bytes.begin(), bytes.end(), copy.octets.get());
        return copy;
    }

    [[nodiscard]] ByteView view() const noexcept { return {octets.get(), length}; }
};

} // namespace norvane
