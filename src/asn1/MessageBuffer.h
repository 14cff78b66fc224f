#pragma once

#include "asn1/ASN1Context.h"
#include "asn1/ByteView.h"

#include <cstdint>

namespace norvane {

/// What control classes read from and write to. It holds a reference on its context, which is made
/// when it is first needed; what was decoded may hold others and outlive the buffer.
class ASN1MessageBuffer {
  public:
    enum Type : int { encoder = 0, decoder = 1 };

    ASN1MessageBuffer() = default;
    ASN1MessageBuffer(ASN1MessageBuffer&&) noexcept = default;
    ASN1MessageBuffer& operator=(ASN1MessageBuffer&&) noexcept = default;
    virtual ~ASN1MessageBuffer() = default;

    /// Makes the buffer as good as new for another use.
    virtual void init() = 0;
    [[nodiscard]] virtual bool isA(Type type) const = 0;

    [[nodiscard]] const ASN1ContextPtr& getContext();
    [[nodiscard]] ASN1CTXT& getCtxt() { return getContext().get()->getCtxt(); }

  protected:
    /// Drops the reference on the present context.
    void releaseContext() { context_ = {}; }

  private:
    ASN1ContextPtr context_;
};

/// Bytes to decode. They stay the caller's and must outlive what is decoded from them.
class ASN1BERDecodeBuffer : public ASN1MessageBuffer {
  public:
    ASN1BERDecodeBuffer() = default;
    ASN1BERDecodeBuffer(const std::uint8_t* bytes, std::uint32_t length) : bytes_{bytes, length} {}

    /// Points the buffer at other bytes and lets go of the context of the former ones.
    void setBuffer(const std::uint8_t* bytes, std::uint32_t length);
    [[nodiscard]] ByteView getBuffer() const { return bytes_; }

    /// Sets the bytes that the buffer holds already, so that they can be decoded again.
    void init() override { setBuffer(bytes_.data, bytes_.length); }
    [[nodiscard]] bool isA(Type type) const override { return type == decoder; }

  private:
    ByteView bytes_;
};

/// The decode buffer of certificate and CRL items.
using CACMPT_ASN1BERDecodeBuffer = ASN1BERDecodeBuffer;

/// Receives an encoding. Where the value holds its encoding already, that is handed out as it is,
/// and lives as long as the bytes that were decoded; any other lies in the buffer's context.
class ASN1BEREncodeBuffer : public ASN1MessageBuffer {
  public:
    /// The first octet of the finished encoding, whose length EncodeTo returned; null before.
    [[nodiscard]] const std::uint8_t* getMsgPtr() const { return message_.data; }

    /// Makes `message` the finished encoding. Returns its length, or a negative status if empty.
    int setMessage(ByteView message);

    void init() override;
    [[nodiscard]] bool isA(Type type) const override { return type == encoder; }

  private:
    ByteView message_;
};

} // namespace norvane
