#pragma once

#include "asn1/ByteView.h"

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string_view>

namespace norvane {

/// Longer texts are refused. The longest text of the parameters of a key, three identifiers of
/// ASN1OBJID::max_arcs arcs each, has about 4,500 octets; the rest is room for white space.
inline constexpr std::uint32_t max_xer_length = 65536;

/// Elements nested deeper than this, counted from the outermost one, are refused.
inline constexpr std::size_t max_xer_nesting = 16;

/// The parser refuses a text; `what` says why and at which octet.
class OSRTSAXException : public std::runtime_error {
  public:
    /// `offset` counts octets from the start of the text.
    OSRTSAXException(std::string_view reason, std::uint32_t offset);
};

/// Receives the elements of a text in their order. Each operation returns false to refuse what it
/// is given, which ends the parsing with an exception. The arguments view the text.
class SaxHandler {
  public:
    virtual ~SaxHandler() = default;
    /// A text begins; whatever was learnt from an earlier one is forgotten.
    virtual void init() = 0;
    [[nodiscard]] virtual bool startElement(std::string_view name) = 0;
    /// All the text between two tags. Text that is nothing but white space is not told.
    [[nodiscard]] virtual bool characters(std::string_view text) = 0;
    /// The end of the element that was started last and has not ended.
    [[nodiscard]] virtual bool endElement(std::string_view name) = 0;

  protected:
    SaxHandler() = default;
    SaxHandler(const SaxHandler&) = default;
    SaxHandler& operator=(const SaxHandler&) = default;
};

/// Reads the part of XML 1.0 that encodings of ASN.1 need (X.693 8): an XML declaration or none,
/// and one element, with white space around elements or without. Tags bear a name and nothing
/// else; there are no attributes, empty-element tags, comments, processing instructions, document
/// types, CDATA sections, character references or entities. No octet outside ASCII passes,
/// whatever encoding the declaration names. The time is linear in the length.
///
/// Throws OSRTSAXException for anything else, for a text beyond the limits above, and for what the
/// handler refuses.
void parse_xml(ByteView text, SaxHandler& handler);

} // namespace norvane
