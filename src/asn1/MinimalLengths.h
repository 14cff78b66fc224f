#pragma once

#include "asn1/ASN1Context.h"
#include "asn1/ByteView.h"

#include <cstdint>
#include <vector>

namespace norvane {

/// Rewrites one BER element so that every length in it is definite and minimal (X.690 10.1). Tags
/// and the content octets of primitive elements stay as they are, so an element in proper DER
/// comes out byte for byte as it went in, and a string in segments stays one.
///
/// The time is linear in the length of the input, whatever it holds.
class MinimalLengths {
  public:
    /// Views `input`, which must outlive the object.
    explicit MinimalLengths(ByteView input) : input_(input) {}

    /// Proves that the input is one element and finds its new length. The result has the status
    /// ok, or tells that the input is cut off, goes on behind the element, is nested more deeply
    /// than max_nesting, or has a length or tag that BER does not allow.
    [[nodiscard]] ASN1Failure measure();

    /// The rewritten element in the memory of `ctxt`. Only after measure() has succeeded.
    [[nodiscard]] ByteView rewrite(ASN1CTXT& ctxt) const;

    /// Where in the input the octet at `offset` of the rewritten element comes from; for an octet
    /// of a header, where that header begins.
    [[nodiscard]] std::uint32_t input_offset(std::uint32_t offset) const;

  private:
    ByteView input_;
    std::uint32_t total_ = 0;
    /// New content lengths of the constructed elements, in the order in which they begin.
    std::vector<std::uint32_t> content_lengths_;
};

} // namespace norvane
