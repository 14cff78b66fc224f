#pragma once

#include <utility>

namespace norvane {

/// One counted reference to an object with add_reference() and release(), or none.
template <class Object>
class Ref {
  public:
    Ref() = default;
    /// Takes over the caller's reference; `object` may be null.
    [[nodiscard]] static Ref adopt(Object* object) noexcept {
        Ref ref;
        ref.object_ = object;
        return ref;
    }
    /// Adds a reference; `object` may be null.
    [[nodiscard]] static Ref share(Object* object) noexcept {
        if (object != nullptr) {
            object->add_reference();
        }
        return adopt(object);
    }
    Ref(const Ref& other) noexcept : Ref(share(other.object_)) {}
    Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Ref& operator=(Ref other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Ref() {
        if (object_ != nullptr) {
            object_->release();
        }
    }

    [[nodiscard]] Object* get() const noexcept { return object_; }
    [[nodiscard]] Object& operator*() const noexcept { return *object_; }
    [[nodiscard]] Object* operator->() const noexcept { return object_; }
    [[nodiscard]] explicit operator bool() const noexcept { return object_ != nullptr; }
    /// Gives the reference to the caller.
    [[nodiscard]] Object* detach() noexcept { return std::exchange(object_, nullptr); }

  private:
    Object* object_ = nullptr;
};

} // namespace norvane
