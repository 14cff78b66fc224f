#pragma once

#include "asn1/Extension.h"
#include "values/Exceptions.h"
#include "values/ObjectIdentifierText.h"

#include <cstdint>

namespace norvane {

/// When an accessor's memo byte is set. It decides what a second read gives after the first one
/// has thrown because the item does not decode:
enum class MemoSet : std::uint8_t {
    on_entry,           ///< The extension counts as absent.
    on_exit,            ///< The second read looks again, and throws again.
    without_extensions, ///< As on_exit, and even a good look-up is only remembered for an item
                        ///< that has no extensions at all; else every read looks up afresh.
};

/// What an accessor keeps of its extension, and the memo byte that tells an absent extension from
/// one that nobody has looked for.
template <class Kept>
struct Lazy {
    Kept kept{};
    bool memo = false;
};

/// One row of the tables of accessors: the extension, when the memo is set, and what is kept.
template <class Kept>
struct ExtensionRule {
    const char* oid;
    MemoSet memo_set;
    /// Fills `lazy.kept` from the extension. May throw; the next read then looks again, unless
    /// `keep` has set the memo, and so takes what it has kept.
    void (*keep)(const ASN1T_Extension& extension, Lazy<Kept>& lazy);
};

/// The first extension with this identifier, null if there is none. `oid` is a constant of the
/// program.
[[nodiscard]] inline const ASN1T_Extension* find_extension(const ASN1T_Extensions& extensions,
                                                           const char* oid) {
    const ASN1OBJID wanted = str_to_oid(oid);
    for (const ASN1T_Extension& extension : extensions) {
        if (extension.extnID == wanted) {
            return &extension;
        }
    }
    return nullptr;
}

/// The common plan of the accessors: look up, keep, remember. `item.extensions()` gives the list,
/// or null if the item has none, and throws Asn1Exception if the item does not decode. A failure of
/// another kind, for want of memory say, leaves no memo: the next read may succeed, and until then
/// the extension must not pass for absent.
template <class Item, class Kept>
const Kept& look_up(const Item& item, Lazy<Kept>& lazy, const ExtensionRule<Kept>& rule) {
    if (lazy.memo) {
        return lazy.kept;
    }
    lazy = {};
    const ASN1T_Extensions* extensions = nullptr;
    try {
        extensions = item.extensions();
    } catch (const Asn1Exception&) {
        lazy.memo = rule.memo_set == MemoSet::on_entry;
        throw;
    }
    if (extensions == nullptr) {
        lazy.memo = true;
        return lazy.kept;
    }
    if (const ASN1T_Extension* const extension = find_extension(*extensions, rule.oid)) {
        rule.keep(*extension, lazy);
    }
    lazy.memo = rule.memo_set != MemoSet::without_extensions;
    return lazy.kept;
}

/// Keeps the pointer to the decoded value: null for one that is not what its type says.
template <class Value>
void keep_value(const ASN1T_Extension& extension, Lazy<const Value*>& lazy) {
    lazy.kept = extension.value_as<Value>();
}

} // namespace norvane
