#include "platform/store/Store.h"

#include "platform/ForkLocks.h"
#include "platform/NeverDestroyed.h"

#include <array>
#include <atomic>
#include <mutex>
#include <unordered_map>

namespace norvane {

/// All stores by number.
class Store::Table {
  public:
    [[nodiscard]] static Table& instance();

    [[nodiscard]] std::uintptr_t new_number() noexcept {
        return next_number_.fetch_add(1, std::memory_order_relaxed);
    }

    void enter(Store& store) {
        Shard& shard = shard_of(store.number_);
        const std::lock_guard lock(shard.mutex);
        shard.by_number.emplace(store.number_, &store);
    }

    void remove(std::uintptr_t number) noexcept {
        Shard& shard = shard_of(number);
        const std::lock_guard lock(shard.mutex);
        shard.by_number.erase(number);
    }

    [[nodiscard]] Ref<Store> find(std::uintptr_t number) {
        Shard& shard = shard_of(number);
        const std::lock_guard lock(shard.mutex);
        const auto found = shard.by_number.find(number);
        const bool alive =
            found != shard.by_number.end() && found->second->references_.add_if_alive();
        return Ref<Store>::adopt(alive ? found->second : nullptr);
    }

    void visit_locks(LockVisitor visit) {
        for (Shard& shard : shards_) {
            visit(shard.mutex);
        }
    }

  private:
    struct Shard {
        std::mutex mutex;
        std::unordered_map<std::uintptr_t, Store*> by_number;
    };

    [[nodiscard]] Shard& shard_of(std::uintptr_t number) {
        return shards_[number % shards_.size()];
    }

    std::atomic<std::uintptr_t> next_number_{1};
    std::array<Shard, locks_of_a_table> shards_;
};

namespace {

NeverDestroyed<Store::Table> all_stores;

} // namespace

Store::Table& Store::Table::instance() { return all_stores.object; }

void visit_store_table_locks(LockVisitor visit) { Store::Table::instance().visit_locks(visit); }

Store::Store() : number_(Table::instance().new_number()) {}

Store::~Store() { Table::instance().remove(number_); }

void Store::publish() { Table::instance().enter(*this); }

Ref<Store> Store::find(HCERTSTORE handle) {
    return Table::instance().find(reinterpret_cast<std::uintptr_t>(handle));
}

void Store::release() noexcept {
    if (references_.remove()) {
        delete this;
    }
}

bool Store::close() noexcept {
    if (!openings_.remove_if_alive()) {
        return false;
    }
    release();
    return true;
}

} // namespace norvane
