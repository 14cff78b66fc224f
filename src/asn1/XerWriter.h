#pragma once

#include "asn1/ASN1Context.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace norvane {

/// Writes elements in XER (X.693), in the form that the flags of a context ask for: with an XML
/// declaration or without, each element on a line of its own or all on one.
class XerWriter {
  public:
    explicit XerWriter(const ASN1CTXT& ctxt);

    void open(std::string_view name);
    void close(std::string_view name);
    /// An element with a content that needs no escapes.
    void leaf(std::string_view name, std::string_view content);

    /// The text, which leaves the writer.
    [[nodiscard]] std::string take() { return std::move(text_); }

  private:
    void start_line();
    void end_line();

    bool lines_;
    std::size_t depth_ = 0;
    std::string text_;
};

} // namespace norvane
