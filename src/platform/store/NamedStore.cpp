#include "platform/store/NamedStore.h"

#include "asn1/LargePages.h"
#include "platform/ForkLocks.h"
#include "platform/LazyObject.h"
#include "platform/WholeFile.h"
#include "platform/store/ObjectFile.h"

#include <algorithm>
#include <array>
#include <map>
#include <system_error>
#include <variant>

namespace norvane {
namespace {

/// Reads files into a store.
class StoreReader {
  public:
    explicit StoreReader(FileInventory files) {
        content_.unsettled = is_unsettled(files, std::chrono::system_clock::now());
        content_.files = std::move(files);
        content_.objects = Ref<ObjectStore>::adopt(new ObjectStore(Additions::refused));
    }

    [[nodiscard]] StoreContent read() {
        for (const InventoryFile& file : content_.files) {
            read_file(file);
        }
        content_.objects->publish();
        return std::move(content_);
    }

  private:
    void read_file(const InventoryFile& file) {
        if (file.error != 0) {
            skip(file, file.error == EINVAL ? "this is neither a regular file nor a folder"
                                            : std::generic_category().message(file.error));
            return;
        }
        auto outcome = read_whole_file(
            file.path, {.max_size = max_object_file_size, .prepare = prefer_large_pages});
        if (const auto* const fault = std::get_if<FileFault>(&outcome)) {
            if (fault->kind == FileFault::Kind::refused) {
                throw UnreadableFile(file.path, fault->error);
            }
            skip(file, fault->kind == FileFault::Kind::absent ? "the file has gone" : fault->text);
            return;
        }
        FileBytes& bytes = std::get<WholeFile>(outcome).bytes;
        const ObjectFile objects({bytes.octets.get(), static_cast<std::uint32_t>(bytes.size)});
        several_ = objects.objects().size() + objects.faults().size() > 1;
        for (const ObjectFile::Fault& fault : objects.faults()) {
            skip(file, numbered(fault.number, fault.text));
        }
        for (const ObjectFile::Object& object : objects.objects()) {
            if (object.kind == ObjectKind::certificate) {
                add<SharedCertificate>(file, object, bytes);
            } else {
                add<SharedCrl>(file, object, bytes);
            }
        }
    }

    /// @param bytes of the file; given away if the object is all of it.
    template <class Object>
    void add(const InventoryFile& file, const ObjectFile::Object& object, FileBytes& bytes) {
        const bool whole =
            object.bytes.data == bytes.octets.get() && object.bytes.length == bytes.size;
        auto& all = SharedObjects<Object>::instance();
        auto outcome = whole ? all.get(EncodedBytes{std::move(bytes.octets), object.bytes.length})
                             : all.get(object.bytes);
        if (const auto* const fault = std::get_if<ObjectFault>(&outcome)) {
            skip(file, numbered(object.number, fault->text));
            return;
        }
        static_cast<void>(content_.objects->add(std::get<Ref<Object>>(std::move(outcome)),
                                                Duplicate::existing_used));
    }

    [[nodiscard]] std::string numbered(std::uint32_t number, const std::string& text) const {
        return several_ ? "object " + std::to_string(number) + ": " + text : text;
    }

    void skip(const InventoryFile& file, std::string reason) {
        content_.skipped.push_back({file.path.string(), std::move(reason)});
    }

    StoreContent content_;
    bool several_ = false;
};

std::int64_t steady_now_ns() {
    return std::chrono::steady_clock::now().time_since_epoch() / std::chrono::nanoseconds{1};
}

using NamedStores = ByName<NamedStore>;
constinit LazyObject<NamedStores> named_stores;

/// "Root" and "CA" have locks of their own; other stores share them.
constinit std::array<NamedStore::Locks, 2> store_locks;

std::unique_ptr<NamedStores> make_stores() {
    auto made = std::make_unique<NamedStores>();
    for (const auto& [name, paths] : configuration().stores) {
        made->try_emplace(name, paths, store_locks[made->size() % store_locks.size()]);
    }
    return made;
}

} // namespace

void visit_named_store_locks(LockVisitor visit) {
    // All of one kind, then those that are taken under them.
    std::ranges::for_each(store_locks, visit, &NamedStore::Locks::look);
    std::ranges::for_each(store_locks, visit, &NamedStore::Locks::content);
}

NamedStore* NamedStore::find(std::string_view name) {
    NamedStores& stores = named_stores.get(make_stores);
    const auto found = stores.find(name);
    return found == stores.end() ? nullptr : &found->second;
}

std::shared_ptr<const StoreContent> NamedStore::present() const {
    const std::lock_guard lock(locks_.content);
    return content_;
}

std::shared_ptr<const StoreContent> NamedStore::content() {
    const auto is_fresh = [this] {
        return steady_now_ns() < next_look_ns_.load(std::memory_order_acquire);
    };
    std::shared_ptr<const StoreContent> content = present();
    if (content != nullptr && is_fresh()) {
        return content;
    }
    std::unique_lock looking(locks_.look, std::defer_lock);
    if (content == nullptr) {
        looking.lock();
    } else if (!looking.try_lock()) {
        return content;
    }
    content = present();
    if (content != nullptr && is_fresh()) {
        return content;
    }
    FileInventory files = take_inventory(paths_);
    if (content == nullptr || content->unsettled || content->files != files) {
        content = std::make_shared<const StoreContent>(StoreReader(std::move(files)).read());
        const std::lock_guard lock(locks_.content);
        content_ = content;
    }
    next_look_ns_.store(steady_now_ns() + look_interval.count(), std::memory_order_release);
    return content;
}

} // namespace norvane
