#pragma once

#include <cstdint>

namespace norvane {

/// An owned byte buffer: encoded certificates, CRLs, names, key identifiers, and the keys of the
/// ordered maps.
///
/// `data` holds `length` valid bytes; it is null when the blob was never filled, was assigned
/// zero bytes, or was moved from. After a shrinking `resize` the allocation is larger than
/// `length`. Both members are open for reading and the bytes for writing; the pointer and the
/// length change through the operations only. A new size that cannot be allocated throws
/// CAException "out of memory".
class CACMPT_BLOB {
  public:
    CACMPT_BLOB() noexcept = default;
    /// A blob with a copy of the `count` bytes at `bytes`.
    CACMPT_BLOB(const std::uint8_t* bytes, std::uint32_t count);
    CACMPT_BLOB(const CACMPT_BLOB& other);
    CACMPT_BLOB(CACMPT_BLOB&& other) noexcept;
    /// The same as `assign` from the bytes of `other`; assigning a blob to itself changes nothing.
    CACMPT_BLOB& operator=(const CACMPT_BLOB& other);
    CACMPT_BLOB& operator=(CACMPT_BLOB&& other) noexcept;
    virtual ~CACMPT_BLOB();

    /// Replaces the content by a copy of the `count` bytes at `bytes`. The present bytes are freed
    /// first, so `bytes` must not lie in this blob; on a failure the blob is empty.
    void assign(const std::uint8_t* bytes, std::uint32_t count);

    /// Makes `length` equal to `count`. Growing keeps the valid bytes and leaves the added ones
    /// undefined; shrinking neither moves nor clears nor frees anything. On a failure the blob is
    /// unchanged.
    void resize(std::uint32_t count);

    std::uint32_t length = 0;
    std::uint8_t* data = nullptr;
};

/// The order of all containers with blobs as keys: by length first and by bytes second, which is
/// not the lexicographic order.
[[nodiscard]] bool blob_less(const CACMPT_BLOB& a, const CACMPT_BLOB& b) noexcept;

[[nodiscard]] bool operator==(const CACMPT_BLOB& a, const CACMPT_BLOB& b) noexcept;

} // namespace norvane
