#pragma once

#include "platform/store/Ref.h"
#include "platform/store/ReferenceCount.h"

#include <norvane/wincrypt.h>

#include <cstdint>
#include <utility>

namespace norvane {

class ObjectStore;
class CollectionStore;

/// Whether objects may be added to a store once it is known to others.
enum class Additions : std::uint8_t { allowed, refused };

/// What a handle of the platform stands for. The handle is a number that is never given out again,
/// and greater than those of all stores made before.
///
/// References and openings are counted apart: contexts and collections hold references, which keep
/// the store and its handle alive; openings are what handles given to callers stand for, and each
/// holds a reference too.
class Store {
  public:
    class Table;

    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;
    virtual ~Store();

    /// Makes the handle name this store. Throws std::bad_alloc.
    void publish();
    /// A published store. Throws std::bad_alloc.
    template <class Kind, class... Arguments>
    [[nodiscard]] static Ref<Kind> make(Arguments&&... arguments) {
        auto store = Ref<Kind>::adopt(new Kind(std::forward<Arguments>(arguments)...));
        store->publish();
        return store;
    }

    /// The store behind a handle; null if there is none.
    [[nodiscard]] static Ref<Store> find(HCERTSTORE handle);

    [[nodiscard]] HCERTSTORE handle() const noexcept {
        return reinterpret_cast<HCERTSTORE>(number_);
    }

    void add_reference() noexcept { references_.add(); }
    void release() noexcept;
    /// Whether there is but this one reference.
    [[nodiscard]] bool has_one_reference() const noexcept { return references_.value() == 1; }

    /// One opening more.
    void open() noexcept {
        openings_.add();
        references_.add();
    }
    /// Takes an opening back, with its reference. False if there is none.
    [[nodiscard]] bool close() noexcept;
    [[nodiscard]] bool is_open() const noexcept { return openings_.value() != 0; }

    /// The store that holds the objects that this one shows; null for a collection, which shows
    /// those of any number of stores.
    [[nodiscard]] virtual ObjectStore* leaf() noexcept { return nullptr; }
    /// This store as a collection; null if it is none.
    [[nodiscard]] virtual CollectionStore* collection() noexcept { return nullptr; }

  protected:
    Store();
    [[nodiscard]] std::uintptr_t number() const noexcept { return number_; }

  private:
    ReferenceCount references_{1};
    ReferenceCount openings_{0};
    std::uintptr_t number_;
};

} // namespace norvane
