#pragma once

#include "asn1/ByteView.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace norvane {

/// An object identifier as its arcs. Two are equal if the counts and all arcs are equal.
struct ASN1OBJID {
    static constexpr std::uint32_t max_arcs = 128;

    std::uint32_t numids = 0;
    std::array<std::uint32_t, max_arcs> subid{};

    friend bool operator==(const ASN1OBJID& a, const ASN1OBJID& b);
};

/// An object identifier as it was decoded: a view of its content octets, which the decoder has
/// found well formed (X.690 8.19). Arcs are read from them when somebody asks. An arc may exceed
/// 32 bits; such an identifier compares by its octets like any other, but has no ASN1OBJID.
class ASN1TObjId {
  public:
    ASN1TObjId() = default;
    explicit ASN1TObjId(ByteView content) : content_(content) {}

    /// Whether the octets are an object identifier: at least one arc, each in as few groups of
    /// seven bits as it needs, the last group closed.
    [[nodiscard]] static bool well_formed(ByteView content);

    [[nodiscard]] ByteView content() const { return content_; }

    /// Writes the arcs to `arcs`. False, with `arcs` of no use, if one exceeds 32 bits or there
    /// are more than ASN1OBJID holds. An identifier that was never decoded has no arcs.
    [[nodiscard]] bool get_arcs(ASN1OBJID& arcs) const;

    [[nodiscard]] friend bool operator==(const ASN1TObjId& a, const ASN1TObjId& b) {
        return a.content_ == b.content_;
    }
    friend bool operator==(const ASN1TObjId& a, const ASN1OBJID& b);

  private:
    ByteView content_;
};

/// Writes the dotted text with a terminating zero to `buffer`, of `size` bytes. Returns the length
/// of the text, or 0 if it does not fit or the identifier is empty.
[[nodiscard]] std::size_t rtOidToStr(const ASN1OBJID& oid, char* buffer, std::size_t size);

} // namespace norvane
