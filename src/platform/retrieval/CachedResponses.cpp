#include "platform/retrieval/CachedResponses.h"

#include "asn1/Reader.h"
#include "platform/NeverDestroyed.h"
#include "platform/SystemFailure.h"
#include "platform/WholeFile.h"
#include "platform/retrieval/PrivateFile.h"

#include <cerrno>
#include <fcntl.h>
#include <new>
#include <vector>

namespace norvane {
namespace {

/// How much is read between two looks for responses whose files have gone.
constexpr std::uint64_t growth_between_drops = 64ULL << 20;
/// What a response counts beside its bytes, so that many small ones lead to a look too.
constexpr std::uint64_t response_overhead = 64ULL << 10;

/// No response is larger, with all that stands beside it in the file.
constexpr std::uint64_t max_file_size = 2 * std::uint64_t{max_input_length};

/// Null if the file is none of the cache's, or of another URL.
ResponsePtr read_response(std::string_view file, ObjectKind kind, std::string_view url) {
    auto entry =
        decode_cache_entry({reinterpret_cast<const std::uint8_t*>(file.data()), file.size()});
    if (!entry || entry->kind != kind || entry->url != url) {
        return nullptr;
    }
    auto objects = read_objects_of(kind, entry->parts);
    if (!objects) {
        return nullptr;
    }
    auto marks = marks_of(*objects);
    return std::make_shared<const Response>(Response{.objects = std::move(objects),
                                                     .marks = std::move(marks),
                                                     .validators = std::move(entry->validators),
                                                     .content_digest = entry->content_digest,
                                                     .received = entry->received});
}

} // namespace

CachedResponses& CachedResponses::instance() noexcept {
    static NeverDestroyed<CachedResponses> responses;
    return responses.object;
}

ResponsePtr CachedResponses::find(ObjectKind kind, std::string_view url) {
    return look_up(kind, url).content.response;
}

ResponsePtr CachedResponses::find_current(ObjectKind kind, std::string_view url, std::time_t now) {
    const CacheFolder& folder = CacheFolder::instance();
    // Before anything is read: what is written meanwhile makes another state of the folder.
    const std::optional<FolderState> state = folder.state(now);
    if (!state) {
        return current_part(find(kind, url), CrlMarks(folder), now).response;
    }
    const Undisputed here_and_now{.state = *state, .looked_at = now};
    if (const auto slot = known_slot(retrieval_key(kind, url))) {
        const std::lock_guard lock(slot->mutex);
        if (slot->content.undisputed == here_and_now) {
            return slot->content.response;
        }
    }
    const auto [slot, content] = look_up(kind, url);
    const bool undisputed = content.undisputed && content.undisputed->state == *state;
    CurrentPart current = undisputed ? CurrentPart{.response = content.response, .lasting = true}
                                     : current_part(content.response, CrlMarks(folder), now);
    if (current.lasting) {
        const std::lock_guard lock(slot->mutex);
        if (slot->content.response == current.response) {
            slot->content.undisputed = here_and_now;
        }
    }
    return std::move(current.response);
}

CachedResponses::Found CachedResponses::look_up(ObjectKind kind, std::string_view url) {
    const CacheFolder& folder = CacheFolder::instance();
    const std::string key = retrieval_key(kind, url);
    std::shared_ptr<Slot> known = known_slot(key);
    const std::string path =
        known != nullptr ? known->path : folder.path_of(cache_file_name(kind, url));
    struct stat status {};
    if (path.empty() || lstat(path.c_str(), &status) != 0) {
        const DWORD error = path.empty() ? ERROR_SUCCESS : own_failure_of(errno);
        forget(key);
        if (error != ERROR_SUCCESS) {
            throw SystemFailure(error, path);
        }
        return {};
    }
    if (known == nullptr) {
        known = slot(key, path);
    }
    Content content;
    try {
        content = content_of(*known, kind, url, status);
    } catch (...) {
        forget(key);
        throw;
    }
    if (content.response != nullptr) {
        CacheFolder::note_use(path, status);
    }
    return {.slot = std::move(known), .content = std::move(content)};
}

CachedResponses::Content CachedResponses::content_of(Slot& slot, ObjectKind kind,
                                                     std::string_view url,
                                                     const struct stat& status) {
    std::unique_lock lock(slot.mutex);
    if (slot.content.identity == identity_of(status)) {
        return slot.content;
    }
    slot.content = {};
    const auto outcome = read_whole_file(
        slot.path, {.max_size = max_file_size, .more_flags = O_NOFOLLOW, .is_trusted = is_private});
    const auto* const file = std::get_if<WholeFile>(&outcome);
    if (file == nullptr || !CacheFolder::instance().is_usable()) {
        return {};
    }
    Content content{.identity = identity_of(file->status),
                    .response = read_response(file->bytes.text(), kind, url)};
    slot.content = content;
    lock.unlock();
    note_growth(content.identity.size + response_overhead);
    return content;
}

void CachedResponses::keep(const CacheEntry& entry, ResponsePtr response) {
    const std::string name = cache_file_name(entry.kind, entry.url);
    const auto identity = CacheFolder::instance().write(name, entry);
    if (!identity) {
        return;
    }
    const std::shared_ptr<Slot> known =
        slot(retrieval_key(entry.kind, entry.url), CacheFolder::instance().path_of(name));
    {
        const std::lock_guard lock(known->mutex);
        known->content = {.identity = *identity, .response = std::move(response)};
    }
    note_growth(identity->size + response_overhead);
}

std::shared_ptr<CachedResponses::Slot> CachedResponses::known_slot(const std::string& key) {
    const std::lock_guard lock(mutex_);
    const auto known = slots_.find(key);
    return known == slots_.end() ? nullptr : known->second;
}

std::shared_ptr<CachedResponses::Slot> CachedResponses::slot(const std::string& key,
                                                             const std::string& path) {
    const std::lock_guard lock(mutex_);
    const auto known = slots_.find(key);
    return known != slots_.end() ? known->second
                                 : slots_.emplace(key, std::make_shared<Slot>(path)).first->second;
}

void CachedResponses::forget(const std::string& key) {
    decltype(slots_)::node_type forgotten; // outlives the lock
    const std::lock_guard lock(mutex_);
    forgotten = slots_.extract(key);
}

/// From time to time drops the responses whose files have gone or changed, since nobody may ever
/// ask for them again.
void CachedResponses::note_growth(std::uint64_t size) {
    std::vector<std::shared_ptr<Slot>> dropped; // outlives the lock
    const std::lock_guard lock(mutex_);
    growth_bytes_ += size;
    if (growth_bytes_ < growth_between_drops) {
        return;
    }
    growth_bytes_ = 0;
    dropped.reserve(slots_.size());
    std::erase_if(slots_, [&dropped](const auto& item) {
        const std::unique_lock busy(item.second->mutex, std::try_to_lock);
        struct stat status {};
        const bool drop =
            busy.owns_lock() && (lstat(item.second->path.c_str(), &status) != 0 ||
                                 identity_of(status) != item.second->content.identity);
        if (drop) {
            dropped.push_back(item.second);
        }
        return drop;
    });
}

void CachedResponses::begin_in_child() noexcept {
    for (auto at = slots_.begin(); at != slots_.end();) {
        if (at->second->mutex.try_lock()) {
            at->second->mutex.unlock();
            ++at;
        } else {
            // Nobody will ever unlock it, and what it guards may be half made: it stays behind.
            static_cast<void>(new (std::nothrow) std::shared_ptr<Slot>(at->second));
            at = slots_.erase(at);
        }
    }
    mutex_.unlock();
}

} // namespace norvane
