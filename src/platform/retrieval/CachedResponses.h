#pragma once

#include "platform/retrieval/CacheFolder.h"
#include "platform/retrieval/RetrievalOutcome.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace norvane {

/// The responses of the cache folder, each read and checked once in this process for as long as its
/// file does not change.
class CachedResponses {
  public:
    [[nodiscard]] static CachedResponses& instance() noexcept;

    /// The response that is cached for a URL; null if there is none. Throws std::bad_alloc, and
    /// SystemFailure if there is a file that cannot be read.
    [[nodiscard]] ResponsePtr find(ObjectKind kind, std::string_view url);

    /// What may be served of that at present; null if there is nothing. CRLs that are older than a
    /// mark are not. The marks are read anew as soon as any file of the folder has come or gone.
    /// Throws as above.
    /// @param now of the call.
    [[nodiscard]] ResponsePtr find_current(ObjectKind kind, std::string_view url, std::time_t now);

    /// Puts a response, with the bytes that it was read from, into the cache if that is possible.
    /// Throws std::bad_alloc.
    void keep(const CacheEntry& entry, ResponsePtr response);

    void prepare_fork() noexcept { mutex_.lock(); }
    void go_on_in_parent() noexcept { mutex_.unlock(); }
    /// Forgets what threads were busy with that the child does not have.
    void begin_in_child() noexcept;

  private:
    /// That no mark keeps anything of a response out at any time, while the folder is in a state.
    struct Undisputed {
        FolderState state;
        /// The second in which the file was last looked at. Within it the file is taken to be the
        /// same as long as the folder is: it is not to change in place, and who is asked for one
        /// URL many times looks at one thing less.
        std::time_t looked_at = 0;

        [[nodiscard]] bool operator==(const Undisputed&) const = default;
    };
    /// What a file holds.
    struct Content {
        FileIdentity identity;
        ResponsePtr response;
        std::optional<Undisputed> undisputed = {};
    };
    struct Slot {
        explicit Slot(std::string file) : path(std::move(file)) {}

        const std::string path;
        std::mutex mutex;
        Content content;
    };
    /// Where a response lies, and what lay there when it was looked up.
    struct Found {
        std::shared_ptr<Slot> slot;
        Content content;
    };

    [[nodiscard]] Found look_up(ObjectKind kind, std::string_view url);
    /// What the slot's file holds, read anew if it is not the file that was read before.
    [[nodiscard]] Content content_of(Slot& slot, ObjectKind kind, std::string_view url,
                                     const struct stat& status);
    [[nodiscard]] std::shared_ptr<Slot> known_slot(const std::string& key);
    [[nodiscard]] std::shared_ptr<Slot> slot(const std::string& key, const std::string& path);
    void forget(const std::string& key);
    void note_growth(std::uint64_t size);

    /// Held for a moment, or for the search of what has no file any more. Nothing is let go of
    /// under it, which would take locks of other folders.
    std::mutex mutex_;
    std::unordered_map<std::string, std::shared_ptr<Slot>> slots_; ///< By kind and URL.
    std::uint64_t growth_bytes_ = 0;                               ///< since the last drop
};

} // namespace norvane
