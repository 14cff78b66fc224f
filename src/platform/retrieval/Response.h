#pragma once

#include "asn1/ByteView.h"
#include "platform/retrieval/CacheEntry.h"
#include "platform/store/ObjectStore.h"
#include "platform/store/SignedData.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace norvane {

/// What a URL delivered, read. It does not change, and all who retrieve it share it.
struct Response {
    Ref<ObjectStore> objects; ///< at least one, in the order of the response
    Validators validators;
    std::vector<CrlMark> marks; ///< of its CRLs, and of those that the URL delivered before
    Digest content_digest{};
};

/// Reads the objects of a kind out of the parts of a response. What cannot be read costs only
/// itself. Null if there is no object. Throws std::bad_alloc.
[[nodiscard]] Ref<ObjectStore> read_objects_of(ObjectKind kind, std::span<const ByteView> parts);

/// The marks of the CRLs in a store.
[[nodiscard]] std::vector<CrlMark> marks_of(const ObjectStore& objects);

/// The scope of a mark in `answer` that is older than the one in `seen`; nothing if there is none.
/// Marks in `seen` that are later than `latest` (ticks of 100 ns since 1601) do not count.
[[nodiscard]] std::optional<Digest> rolled_back_scope(std::span<const CrlMark> answer,
                                                      std::span<const CrlMark> seen,
                                                      std::uint64_t latest);

/// The marks to keep when `answer` takes the place of what left `seen`: `seen` ones first, so that
/// none is pushed out, and each as new as the answer has it.
[[nodiscard]] std::vector<CrlMark> merged_marks(std::span<const CrlMark> answer,
                                                std::span<const CrlMark> seen);

} // namespace norvane
