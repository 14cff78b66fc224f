#pragma once

#include <norvane/wincrypt.h>

#include <cstdint>
#include <type_traits>

namespace norvane {

class ObjectStore;

/// What a pointer to a context points to. A cell belongs to a store, or to the object itself as
/// its context outside of stores; references to the context are references to whichever it is.
template <class Object>
struct ContextCell {
    using Context = typename Object::Context;

    Context context{};
    Object* object = nullptr;
    ObjectStore* store = nullptr; ///< Null for the context outside of stores.
    std::uint32_t place = 0;      ///< In the order of the store.

    [[nodiscard]] static ContextCell& of(const Context* context) noexcept {
        static_assert(std::is_standard_layout_v<ContextCell>);
        return *reinterpret_cast<ContextCell*>(const_cast<Context*>(context));
    }
};

} // namespace norvane
