#pragma once

#include "platform/store/ObjectStore.h"
#include "platform/store/Store.h"

#include <unordered_set>
#include <vector>

namespace norvane {

/// A store that shows the objects of its members, which may be collections too.
class CollectionStore final : public Store {
  public:
    enum class MemberUse : std::uint8_t { shown, takes_additions };

    explicit CollectionStore(Additions additions) : additions_(additions) {}

    /// Adds a member; nothing changes if it is one already. False if it is this collection or
    /// contains it.
    [[nodiscard]] bool add_member(Ref<Store> store, MemberUse use, DWORD priority);

    /// The stores that hold what this one shows, each once, in the order in which a walk through
    /// the members first meets it.
    [[nodiscard]] std::vector<Ref<ObjectStore>> leaves();

    /// The store that additions go to; null if there is none.
    [[nodiscard]] Ref<ObjectStore> target_of_additions();

    [[nodiscard]] CollectionStore* collection() noexcept override { return this; }

  private:
    struct Member {
        Ref<Store> store;
        MemberUse use;
        DWORD priority;
    };

    /// What a walk has met.
    struct Walk {
        std::vector<Ref<ObjectStore>> leaves;
        std::unordered_set<const Store*> stores;
    };

    void walk(Walk& met);
    [[nodiscard]] ObjectStore* find_target();

    std::vector<Member> members_; ///< Greatest priority first.
    const Additions additions_;
};

} // namespace norvane
