#pragma once

#include "platform/failure.h"
#include "platform/store/ContextCell.h"
#include "platform/store/ObjectStore.h"
#include "platform/store/SharedObject.h"

namespace norvane {

/// The shared object over the bytes that a caller gave; null with the last error if they are none.
template <class Object>
[[nodiscard]] Ref<Object> shared_object(DWORD encoding_type, const BYTE* bytes, DWORD length) {
    constexpr DWORD certificate_encoding_mask = 0x0000FFFF;
    if ((encoding_type & certificate_encoding_mask) != X509_ASN_ENCODING ||
        (bytes == nullptr && length != 0)) {
        return fail<Ref<Object>>(E_INVALIDARG);
    }
    auto outcome = SharedObjects<Object>::instance().get({bytes, length});
    if (const auto* const fault = std::get_if<ObjectFault>(&outcome)) {
        return fail<Ref<Object>>(fault->error);
    }
    return std::get<Ref<Object>>(std::move(outcome));
}

/// One reference more to a context.
template <class Object>
const typename Object::Context* share_context(const ContextCell<Object>& cell) noexcept {
    if (cell.store != nullptr) {
        cell.store->add_reference();
    } else {
        cell.object->add_reference();
    }
    return &cell.context;
}

/// Gives back one reference to a context.
template <class Object>
void release_context(const ContextCell<Object>& cell) noexcept {
    if (cell.store != nullptr) {
        cell.store->release();
    } else {
        cell.object->release();
    }
}

/// Gives back a reference at the end of a scope. Holds a context, or null.
template <class Object>
class HeldContext {
  public:
    explicit HeldContext(const typename Object::Context* context) noexcept
        : cell_(context == nullptr ? nullptr : &ContextCell<Object>::of(context)) {}
    HeldContext(const HeldContext&) = delete;
    HeldContext& operator=(const HeldContext&) = delete;
    ~HeldContext() {
        if (cell_ != nullptr) {
            release_context(*cell_);
        }
    }

    [[nodiscard]] const ContextCell<Object>* cell() const noexcept { return cell_; }

  private:
    const ContextCell<Object>* cell_;
};

} // namespace norvane
