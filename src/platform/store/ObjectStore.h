#pragma once

#include "platform/store/SharedCertificate.h"
#include "platform/store/SharedCrl.h"
#include "platform/store/Store.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <vector>

namespace norvane {

/// What becomes of an object whose bytes the store has already.
enum class Duplicate : std::uint8_t { refused, existing_used, added };

/// The objects of one kind in a store, in the order of addition.
template <class Object>
class CellList {
  public:
    using Cell = ContextCell<Object>;

    /// The first cell over this object; null if there is none.
    [[nodiscard]] Cell* find(const Object* object) const {
        const auto found = by_object_.find(object);
        return found == by_object_.end() ? nullptr : at(found->second);
    }

    [[nodiscard]] Cell* at(std::uint32_t place) const noexcept {
        return place < kept_.size() ? kept_[place].cell.get() : nullptr;
    }

    /// If it throws, the list is as before.
    [[nodiscard]] Cell& add(Ref<Object> object, ObjectStore& store);

    /// Takes the last one out again.
    void drop_last() noexcept;

  private:
    struct Kept {
        Ref<Object> object;
        std::unique_ptr<Cell> cell;
    };

    std::vector<Kept> kept_;
    std::unordered_map<const Object*, std::uint32_t> by_object_;
};

/// A store that holds objects itself, and never lets go of one. One that refuses additions is
/// filled by its maker before it is published, and is read without a lock.
class ObjectStore final : public Store {
  public:
    explicit ObjectStore(Additions additions) : additions_(additions) {}
    ~ObjectStore() override;

    /// Adds an object unless the store has it. Gives its cell, or null if it was refused.
    [[nodiscard]] CertificateCell* add(Ref<SharedCertificate> object, Duplicate duplicate);
    [[nodiscard]] CrlCell* add(Ref<SharedCrl> object, Duplicate duplicate);

    /// The first object from `place` on; null if there is none.
    [[nodiscard]] CertificateCell* certificate_from(std::uint32_t place) const;
    [[nodiscard]] CrlCell* crl_from(std::uint32_t place) const;
    /// The same among the certificates with this subject key identifier.
    [[nodiscard]] CertificateCell* certificate_from(std::uint32_t place,
                                                    ByteView key_identifier) const;

    [[nodiscard]] ObjectStore* leaf() noexcept override { return this; }
    [[nodiscard]] Additions additions() const noexcept { return additions_; }

  private:
    struct Content;

    [[nodiscard]] Content& content();
    [[nodiscard]] std::unique_lock<std::mutex> lock() const;

    /// Null until the first addition, so that an empty store takes little.
    std::atomic<Content*> content_ = nullptr;
    const Additions additions_;
};

} // namespace norvane
