#pragma once

#include "asn1/ByteView.h"
#include "values/ASN1Blob.h"

#include <cstddef>
#include <string>
#include <unordered_map>

namespace norvane {

/// The canonical forms of names that were compared on this thread while the object lives. A search
/// for an issuer compares one name with those of all that the stores show, over and over, and
/// nested searches do it again; making the forms costs more than all the rest of it.
///
/// Of several that live on a thread the outermost remembers. A form follows from the bytes alone,
/// so what is remembered changes no answer.
class RememberedNames {
  public:
    /// What is remembered of one thread, keys and forms together. Twenty thousand names of usual
    /// length are no more; those beyond it are made anew each time.
    static constexpr std::size_t max_octets = std::size_t{4} << 20;

    RememberedNames() noexcept;
    RememberedNames(const RememberedNames&) = delete;
    RememberedNames& operator=(const RememberedNames&) = delete;
    ~RememberedNames();

    /// The form of an encoded name: a remembered one, or a new one, in `own` if there is no place
    /// to remember it. Throws as canonical_name does.
    [[nodiscard]] static const CACMPT_BLOB& form_of(ByteView encoded_name, CACMPT_BLOB& own);

  private:
    struct Hash {
        using is_transparent = void;
        [[nodiscard]] std::size_t operator()(std::string_view octets) const noexcept {
            return std::hash<std::string_view>()(octets);
        }
    };

    std::unordered_map<std::string, CACMPT_BLOB, Hash, std::equal_to<>> forms_;
    std::size_t octets_ = 0;
};

} // namespace norvane
