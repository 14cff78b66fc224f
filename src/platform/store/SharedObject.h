#pragma once

#include "asn1/ByteView.h"
#include "platform/ForkLocks.h"
#include "platform/NeverDestroyed.h"
#include "platform/store/ByteHash.h"
#include "platform/store/EncodedBytes.h"
#include "platform/store/ObjectFault.h"
#include "platform/store/Ref.h"
#include "platform/store/ReferenceCount.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>
#include <variant>

namespace norvane {

template <class Object>
class SharedObjects;
/// Those that are alive in this process, for each kind.
template <class Object>
inline NeverDestroyed<SharedObjects<Object>> all_shared_objects;

/// What all contexts over the same bytes have in common: the bytes and what is read from them. It
/// does not change, so any thread may read it. `Object` is the class that derives.
template <class Object>
class SharedObject {
  public:
    SharedObject(const SharedObject&) = delete;
    SharedObject& operator=(const SharedObject&) = delete;

    [[nodiscard]] ByteView encoded() const noexcept { return bytes_.view(); }
    [[nodiscard]] std::uint64_t hash() const noexcept { return hash_; }

    void add_reference() noexcept { references_.add(); }
    [[nodiscard]] bool add_reference_if_alive() noexcept { return references_.add_if_alive(); }
    void release() noexcept {
        if (references_.remove()) {
            auto& object = static_cast<Object&>(*this);
            SharedObjects<Object>::instance().remove(object);
            delete &object;
        }
    }

  protected:
    SharedObject(EncodedBytes bytes, std::uint64_t hash) noexcept
        : hash_(hash), bytes_(std::move(bytes)) {}
    ~SharedObject() = default;

  private:
    ReferenceCount references_{1};
    std::uint64_t hash_;
    EncodedBytes bytes_;
};

/// Those that are alive in this process, by their bytes.
template <class Object>
class SharedObjects {
  public:
    [[nodiscard]] static SharedObjects& instance() { return all_shared_objects<Object>.object; }

    /// The object over these bytes, made by `Object::make` of a copy if there is none.
    [[nodiscard]] std::variant<Ref<Object>, ObjectFault> get(ByteView bytes) {
        return get(bytes, [bytes] { return EncodedBytes::copy_of(bytes); });
    }
    /// The same without a copy.
    [[nodiscard]] std::variant<Ref<Object>, ObjectFault> get(EncodedBytes&& bytes) {
        return get(bytes.view(), [&] { return std::move(bytes); });
    }

    /// For an object without references.
    void remove(const Object& object) noexcept {
        Shard& shard = shard_of(object.hash());
        const std::lock_guard lock(shard.mutex);
        const auto [first, last] = shard.by_hash.equal_range(object.hash());
        for (auto place = first; place != last; ++place) {
            if (place->second == &object) {
                shard.by_hash.erase(place);
                return;
            }
        }
    }

    void visit_locks(LockVisitor visit) {
        for (Shard& shard : shards_) {
            visit(shard.mutex);
        }
    }

  private:
    struct Shard {
        std::mutex mutex;
        std::unordered_multimap<std::uint64_t, Object*> by_hash;
    };

    [[nodiscard]] Shard& shard_of(std::uint64_t hash) {
        return shards_[(hash >> 32) % shards_.size()];
    }

    template <class GiveBytes>
    [[nodiscard]] std::variant<Ref<Object>, ObjectFault> get(ByteView bytes, GiveBytes give_bytes) {
        const std::uint64_t hash = byte_hash(bytes);
        if (Ref<Object> known = find(hash, bytes)) {
            return known;
        }
        std::variant<Ref<Object>, ObjectFault> made = Object::make(give_bytes(), hash);
        if (auto* const object = std::get_if<Ref<Object>>(&made)) {
            return enter(std::move(*object));
        }
        return made;
    }

    /// Of large CRLs the comparison takes its time, so it is made without the lock.
    [[nodiscard]] Ref<Object> find(std::uint64_t hash, ByteView bytes) {
        Ref<Object> candidate;
        {
            Shard& shard = shard_of(hash);
            const std::lock_guard lock(shard.mutex);
            const auto [first, last] = shard.by_hash.equal_range(hash);
            for (auto place = first; place != last && !candidate; ++place) {
                if (place->second->add_reference_if_alive()) {
                    candidate = Ref<Object>::adopt(place->second);
                }
            }
        }
        return candidate && candidate->encoded() == bytes ? candidate : Ref<Object>();
    }

    /// Enters a new object, unless another thread was faster: then gives that thread's.
    [[nodiscard]] Ref<Object> enter(Ref<Object> object) {
        Shard& shard = shard_of(object->hash());
        const std::lock_guard lock(shard.mutex);
        const auto [first, last] = shard.by_hash.equal_range(object->hash());
        for (auto place = first; place != last; ++place) {
            if (place->second->encoded() == object->encoded() &&
                place->second->add_reference_if_alive()) {
                return Ref<Object>::adopt(place->second);
            }
        }
        shard.by_hash.emplace(object->hash(), object.get());
        return object;
    }

    std::array<Shard, locks_of_a_table> shards_;
};

} // namespace norvane
