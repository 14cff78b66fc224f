#pragma once

#include "platform/config/Configuration.h"
#include "platform/store/FileInventory.h"
#include "platform/store/ObjectStore.h"
#include "platform/store/Store.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace norvane {

/// A file that was passed over, or an object of it.
struct SkippedFile {
    std::string path;
    std::string reason;
};

/// What was read from the files of a store at one time. It does not change.
struct StoreContent {
    Ref<ObjectStore> objects;
    std::vector<SkippedFile> skipped;
    FileInventory files;
    bool unsettled = false; ///< A file was so new that its state does not prove its content.
};

/// A system store of the configuration, read from files when somebody wants it.
class NamedStore {
  public:
    /// How long what was read is taken for what the files hold.
    static constexpr std::chrono::nanoseconds look_interval = std::chrono::seconds{1};

    /// The locks of a store, which are few and may be shared: fork could not find them in a store.
    struct Locks {
        std::mutex look;    ///< Held by the thread that looks.
        std::mutex content; ///< Held for a moment.
    };

    NamedStore(const PathList& paths, Locks& locks) : paths_(paths), locks_(locks) {}

    /// The store of this name; null if the configuration has none.
    [[nodiscard]] static NamedStore* find(std::string_view name);

    /// What the files hold. Looks at them if the last look is longer ago than the interval, and
    /// reads all if one has changed, come or gone. While one thread looks, others are given what
    /// there is. Throws std::bad_alloc, and UnreadableFile if not all could be read: then nothing
    /// is kept of it, and the next call looks again.
    [[nodiscard]] std::shared_ptr<const StoreContent> content();

  private:
    [[nodiscard]] std::shared_ptr<const StoreContent> present() const;

    const PathList& paths_;
    Locks& locks_;
    std::atomic<std::int64_t> next_look_ns_ = 0;
    std::shared_ptr<const StoreContent> content_;
};

/// An opening of a system store: shows what the store held at that time.
class OpenedNamedStore final : public Store {
  public:
    explicit OpenedNamedStore(Ref<ObjectStore> objects) : objects_(std::move(objects)) {}

    [[nodiscard]] ObjectStore* leaf() noexcept override { return objects_.get(); }

  private:
    Ref<ObjectStore> objects_;
};

} // namespace norvane
