#pragma once

#include "platform/retrieval/CrlMark.h"

#include <ctime>
#include <span>

namespace norvane {

class CacheFolder;

/// The dates of the marks of one scope, as CrlMark has them.
struct MarkDates {
    std::uint64_t least = 0;  ///< that a CRL must have at present to be taken; 0 if there is none
    std::uint64_t newest = 0; ///< that a CRL may ever need while the folder stays as it is
};

/// The marks of the newest CRLs that have been seen, by scope and whatever URL they came from. They
/// are files of the cache folder, apart from the responses, so that neither the removal of these
/// nor what others put into the cache erases them.
///
/// A mark on the ground `served` may stem from a forged CRL, so it lasts a day from when a server
/// last delivered the CRL. One on the ground `verified` lasts; both kinds are bounded in number.
/// While there is no room no more are made on the ground `served`, so that many scopes that someone
/// thinks up do not push out others; they never take room from those on the ground `verified`. Of
/// these the one goes that was made the longest ago.
///
/// A file that is gone or damaged is a mark that was never made. Of two processes that make a mark
/// of one scope at the same moment the older date may stay, until the newer CRL is seen again.
class CrlMarks {
  public:
    /// `folder` must outlive this object.
    explicit CrlMarks(const CacheFolder& folder) : folder_(folder) {}

    /// Throws std::bad_alloc, and SystemFailure if a file cannot be read that is there.
    [[nodiscard]] MarkDates dates(const Digest& scope, std::time_t now) const;

    /// Notes CRLs that a server has delivered and that are taken. One that cannot be noted for want
    /// of room or of a folder is not. Throws as above.
    void note_served(std::span<const CrlMark> marks, std::time_t now) const;

    /// Notes a CRL on which a verdict rests. As above.
    void note_verified(const CrlMark& mark, std::time_t now) const;

  private:
    const CacheFolder& folder_;
};

} // namespace norvane
