#pragma once

#include "asn1/ControlClass.h"
#include "asn1/GostPublicKeyParameters.h"
#include "asn1/SaxParser.h"
#include "asn1/XerBuffers.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace norvane {

/// Binds the parameters of a GOST R 34.10-94 key to a message buffer, like every control class, and
/// also to XER: the element GostR3410-94-PublicKeyParameters with an element for each field, whose
/// content is the identifier in dotted decimal text.
class ASN1C_GostR3410_94_PublicKeyParameters final
    : public ASN1C<ASN1T_GostR3410_94_PublicKeyParameters>,
      public SaxHandler {
  public:
    using ASN1C::ASN1C;
    using ASN1C::DecodeFrom;
    using ASN1C::EncodeTo;

    /// Writes the text of the value to `buffer`. Returns 0, or a negative status with the failure
    /// in the context of `buffer` if the value was never filled or an identifier has an arc beyond
    /// 32 bits.
    [[nodiscard]] int EncodeTo(ASN1XEREncodeBuffer& buffer) const;

    /// Fills the value from the text of `buffer`, and its `encoding` with the DER of what was read.
    /// Both lie in the context of `buffer`, on which the value holds a reference. Returns 0. Throws
    /// OSRTSAXException, with the value empty, if the text is anything but the element.
    [[nodiscard]] int DecodeFrom(ASN1XERDecodeBuffer& buffer);

    void init() override;
    [[nodiscard]] bool startElement(std::string_view name) override;
    [[nodiscard]] bool characters(std::string_view text) override;
    [[nodiscard]] bool endElement(std::string_view name) override;

  private:
    /// Where in the element the parser is.
    enum class Place : std::uint8_t { outside, between_fields, empty_field, filled_field };

    Place place_ = Place::outside;
    std::size_t fields_read_ = 0;
    std::vector<std::uint8_t> content_; ///< The fields read so far, in DER.
};

} // namespace norvane
