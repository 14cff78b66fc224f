#include "platform/store/CollectionStore.h"

#include "platform/ForkLocks.h"

#include <algorithm>
#include <functional>
#include <mutex>

namespace norvane {
namespace {

/// Guards the members of all collections: walks go from one into another, and what makes no circle
/// now must not make one with an addition at the same time.
constinit std::mutex members_mutex;

} // namespace

void visit_collection_locks(LockVisitor visit) { visit(members_mutex); }

bool CollectionStore::add_member(Ref<Store> store, MemberUse use, DWORD priority) {
    const std::lock_guard lock(members_mutex);
    if (CollectionStore* const inner = store->collection()) {
        Walk met;
        inner->walk(met);
        if (met.stores.contains(this)) {
            return false;
        }
    }
    const auto is_same = [&](const Member& member) { return member.store.get() == store.get(); };
    if (std::ranges::none_of(members_, is_same)) {
        const auto place =
            std::ranges::upper_bound(members_, priority, std::ranges::greater{}, &Member::priority);
        members_.insert(place, {std::move(store), use, priority});
    }
    return true;
}

std::vector<Ref<ObjectStore>> CollectionStore::leaves() {
    const std::lock_guard lock(members_mutex);
    Walk met;
    walk(met);
    return std::move(met.leaves);
}

void CollectionStore::walk(Walk& met) {
    if (!met.stores.insert(this).second) {
        return;
    }
    for (const Member& member : members_) {
        if (CollectionStore* const inner = member.store->collection()) {
            inner->walk(met);
        } else if (ObjectStore* const leaf = member.store->leaf(); met.stores.insert(leaf).second) {
            met.leaves.push_back(Ref<ObjectStore>::share(leaf));
        }
    }
}

Ref<ObjectStore> CollectionStore::target_of_additions() {
    const std::lock_guard lock(members_mutex);
    return Ref<ObjectStore>::share(find_target());
}

ObjectStore* CollectionStore::find_target() {
    if (additions_ == Additions::refused) {
        return nullptr;
    }
    for (const Member& member : members_) {
        if (member.use != MemberUse::takes_additions) {
            continue;
        }
        CollectionStore* const inner = member.store->collection();
        ObjectStore* const leaf = inner != nullptr ? inner->find_target() : member.store->leaf();
        if (leaf != nullptr && leaf->additions() == Additions::allowed) {
            return leaf;
        }
    }
    return nullptr;
}

} // namespace norvane
