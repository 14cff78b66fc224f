#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "values/Exceptions.h"

namespace norvane {

/// What can be done with the values of one alternative of a choice, without knowing their type.
class ChoiceValueTraits {
  public:
    constexpr virtual ~ChoiceValueTraits() = default;

    /// Whether this object serves the alternative `tag`.
    [[nodiscard]] virtual bool has_tag(std::uint32_t tag) const = 0;
    /// Deletes a value made by `clone`; null is ignored.
    virtual void destroy(void* value) const = 0;
    /// A new copy, owned by the caller until `destroy`. Null throws CAException "pointer is null".
    [[nodiscard]] virtual void* clone(const void* value) const = 0;
    /// Copies a value over an existing one; neither is null.
    virtual void assign(void* target, const void* source) const = 0;
};

/// The traits of values of type `T` under the alternative `Tag`.
template <class T, std::uint32_t Tag>
class ChoiceValueTraitsT final : public ChoiceValueTraits {
  public:
    constexpr ~ChoiceValueTraitsT() override = default;

    [[nodiscard]] bool has_tag(std::uint32_t tag) const override { return tag == Tag; }

    void destroy(void* value) const override { delete static_cast<T*>(value); }

    [[nodiscard]] void* clone(const void* value) const override {
        if (value == nullptr) {
            throw CAException("pointer is null", source_module::asn1_types_impl, __LINE__);
        }
        return new T(*static_cast<const T*>(value));
    }

    void assign(void* target, const void* source) const override {
        *static_cast<T*>(target) = *static_cast<const T*>(source);
    }
};

/// The value of an alternative whose content is not looked at.
using UntypedCell = std::array<std::byte, 8>;

/// A tagged variant: the tag of the present alternative and an owned value, null at first, whose
/// type follows from the tag. A derived class says which traits serve which tag.
class Choice {
  public:
    Choice(const Choice&) = delete;
    Choice& operator=(const Choice&) = delete;
    /// A derived class destroys the value with `destroy_value` in its own destructor, where
    /// `traits` can still be called.
    virtual ~Choice() = default;

    /// Replaces tag and value; the new value is a copy of `value`, which has the type that belongs
    /// to `tag`. The old value goes first, so `value` must not be this object's own.
    /// A tag without traits throws CAException "No traits: type is invalid." and changes nothing.
    /// If the copy throws ("pointer is null" for null), the old value is gone and the object may
    /// only be destroyed.
    void set(std::uint32_t tag, const void* value);

    [[nodiscard]] std::uint32_t tag() const noexcept { return tag_; }
    /// Null as long as nothing was set.
    [[nodiscard]] const void* value() const noexcept { return value_; }

  protected:
    Choice() noexcept = default;

    void destroy_value();

  private:
    /// The traits object for a tag, with static lifetime, or null for a tag that has none.
    [[nodiscard]] virtual const ChoiceValueTraits* traits(std::uint32_t tag) const = 0;

    std::uint32_t tag_ = 0;
    void* value_ = nullptr;
};

} // namespace norvane
