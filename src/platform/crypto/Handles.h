#pragma once

#include "platform/crypto/Provider.h"
#include "platform/crypto/ProviderTable.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace norvane {

/// The first word of what a handle points to. Taking a handle of one kind for another is thus
/// noticed; whether the object still lives cannot be.
enum class HandleKind : std::uint32_t {
    none = 0,
    provider_context = 0x564F5250,
    hash = 0x48534148,
    key = 0x2059454B,
};

template <HandleKind own_kind>
class HandleObject {
  public:
    static constexpr HandleKind kind = own_kind;

    HandleObject() noexcept = default;
    HandleObject(const HandleObject&) = delete;
    HandleObject& operator=(const HandleObject&) = delete;
    ~HandleObject() { kind_ = HandleKind::none; }

    [[nodiscard]] bool is_of_its_kind() const noexcept { return kind_ == own_kind; }

  private:
    std::atomic<HandleKind> kind_ = own_kind; // Atomic, so that the last write is not left out.
};

/// An open provider, counted by references.
struct ProviderContext : HandleObject<HandleKind::provider_context> {
    ProviderContext(const ProviderRow& opened_row, const Provider& opened)
        : row(opened_row), provider(opened) {}

    const ProviderRow& row;
    const Provider& provider;
    std::atomic<std::uint32_t> references = 1;
    std::atomic<std::size_t> next_algorithm = 0; ///< where an enumeration goes on
};

/// A hash, which turns from one at work into a value.
struct HashObject : HandleObject<HandleKind::hash> {
    HashObject(const Provider& owner, ALG_ID hash_algorithm, std::unique_ptr<Hash> hash)
        : provider(owner), algorithm(hash_algorithm), at_work(std::move(hash)) {}

    const Provider& provider;
    ALG_ID algorithm;
    std::mutex mutex; ///< guards what follows
    std::unique_ptr<Hash> at_work;
    std::optional<Digest> value;
};

struct KeyObject : HandleObject<HandleKind::key> {
    KeyObject(const Provider& owner, std::shared_ptr<const PublicKey> key)
        : provider(owner), public_key(std::move(key)) {}

    const Provider& provider;
    std::shared_ptr<const PublicKey> public_key;
};

/// The object of a handle; null for 0 and for handles of another kind.
template <class Object>
[[nodiscard]] Object* object_of(std::uintptr_t handle) noexcept {
    if (handle == 0 || handle % alignof(Object) != 0) {
        return nullptr;
    }
    auto* const object = reinterpret_cast<Object*>(handle);
    return object->is_of_its_kind() ? object : nullptr;
}

/// A new object, which belongs to whoever has the handle. Throws std::bad_alloc.
template <class Object, class... Arguments>
[[nodiscard]] std::uintptr_t make_handle(Arguments&&... arguments) {
    auto object = std::make_unique<Object>(std::forward<Arguments>(arguments)...);
    return reinterpret_cast<std::uintptr_t>(object.release());
}

} // namespace norvane
