#pragma once

#include <array>
#include <cstdint>

#include "values/ASN1Blob.h"
#include "values/Choice.h"

namespace norvane {

/// A hash of another certificate, with the algorithm that made it.
struct CACMPT_OtherHashAlgAndValue {
    /// The dotted object identifier, terminated.
    std::array<char, 256> algorithm{};
    /// The DER parameters of the algorithm.
    CACMPT_BLOB parameters;
    CACMPT_BLOB hash;
};

/// The traits objects of all choices, one for each held type and tag; they stand from program
/// start. GeneralName.cpp has the table of them.
template <class T, std::uint32_t Tag>
inline constexpr ChoiceValueTraitsT<T, Tag> choice_traits{};

} // namespace norvane
