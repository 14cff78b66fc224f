#pragma once

#include "asn1/ByteView.h"
#include "platform/retrieval/CacheEntry.h"
#include "platform/retrieval/CrlMarks.h"
#include "platform/store/ObjectStore.h"
#include "platform/store/SignedData.h"

#include <ctime>
#include <memory>
#include <span>
#include <vector>

namespace norvane {

/// What a URL delivered, read. It does not change, and all who retrieve it share it.
struct Response {
    Ref<ObjectStore> objects;   ///< at least one, in the order of the response
    std::vector<CrlMark> marks; ///< of its CRLs, in their order
    Validators validators;
    Digest content_digest{};
    std::time_t received = 0; ///< when a server delivered it, in seconds since 1970
};

using ResponsePtr = std::shared_ptr<const Response>;

/// Reads the objects of a kind out of the parts of a response. What is no such object costs only
/// itself. Null if there is no object. Throws std::bad_alloc.
[[nodiscard]] Ref<ObjectStore> read_objects_of(ObjectKind kind, std::span<const ByteView> parts);

/// The marks of the CRLs in a store, in their order. Throws std::bad_alloc.
[[nodiscard]] std::vector<CrlMark> marks_of(const ObjectStore& objects);

/// The CRLs that may be served out of a response: of each scope those of the newest date, unless
/// there is a mark that is newer. Of several of one date all are served: none of them shows to be
/// the older one, and a forged one beside a genuine one then takes nothing away.
struct CurrentCrls {
    Ref<ObjectStore> objects;   ///< null if there is none
    std::vector<CrlMark> marks; ///< of `objects`
    bool complete = true;       ///< whether these are all CRLs of the response
    bool lasting = true;        ///< complete at all times, while the marks stay as they are
    /// Of which the response has only CRLs that are older than a mark.
    std::vector<Digest> outdated_scopes;
};

/// @param marks those of `objects`. Of more than 1024 scopes in one response, what comes later is
///     not served.
/// Throws std::bad_alloc and SystemFailure.
[[nodiscard]] CurrentCrls current_crls(const Ref<ObjectStore>& objects,
                                       std::span<const CrlMark> marks, const CrlMarks& seen,
                                       std::time_t now);

/// What may be served of a cached response at present, which may be all of it.
struct CurrentPart {
    ResponsePtr response; ///< null if there is nothing
    bool lasting = false; ///< all of it at all times, while the marks stay as they are
};

/// Throws as above.
[[nodiscard]] CurrentPart current_part(ResponsePtr cached, const CrlMarks& seen, std::time_t now);

} // namespace norvane
