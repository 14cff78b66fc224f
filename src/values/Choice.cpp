#include "values/Choice.h"

#include <utility>

namespace norvane {

void Choice::set(std::uint32_t tag, const void* value) {
    const ChoiceValueTraits* const new_traits = traits(tag);
    if (new_traits == nullptr) {
        throw CAException("No traits: type is invalid.", source_module::asn1_types_impl, __LINE__);
    }
    destroy_value();
    value_ = new_traits->clone(value);
    tag_ = tag;
}

void Choice::destroy_value() {
    // The pointer is cleared, so that a failed clone leaves nothing to be destroyed twice.
    void* const value = std::exchange(value_, nullptr);
    if (const ChoiceValueTraits* const old_traits = traits(tag_)) {
        old_traits->destroy(value);
    }
}

} // namespace norvane
