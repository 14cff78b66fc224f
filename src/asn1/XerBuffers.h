#pragma once

#include "asn1/ByteView.h"
#include "asn1/MessageBuffer.h"

#include <cstdint>
#include <string>

namespace norvane {

/// An XER text to decode. It stays the caller's and must live through the decoding; what is decoded
/// lies in the buffer's context.
class ASN1XERDecodeBuffer : public ASN1MessageBuffer {
  public:
    ASN1XERDecodeBuffer(const std::uint8_t* text, std::uint32_t length) : text_{text, length} {}

    [[nodiscard]] ByteView getBuffer() const { return text_; }

    /// Lets the text be decoded again, in a new context.
    void init() override { releaseContext(); }
    [[nodiscard]] bool isA(Type type) const override { return type == decoder; }

  private:
    ByteView text_;
};

/// Receives an XER text. How it is written the flags of the buffer's context say.
class ASN1XEREncodeBuffer : public ASN1MessageBuffer {
  public:
    /// The finished text, of getMsgLen() octets, without a terminating zero. Lives as long as the
    /// buffer is not used again.
    [[nodiscard]] const char* getMsgPtr() const { return text_.data(); }
    [[nodiscard]] std::uint32_t getMsgLen() const {
        return static_cast<std::uint32_t>(text_.size());
    }

    void setMessage(std::string text) { text_ = std::move(text); }

    void init() override;
    [[nodiscard]] bool isA(Type type) const override { return type == encoder; }

  private:
    std::string text_;
};

} // namespace norvane
