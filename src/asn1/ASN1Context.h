#pragma once

#include "asn1/Arena.h"
#include "asn1/ByteView.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace norvane {

/// What an operation of the runtime returns: 0 for success, a negative value for a failure whose
/// description stands in the context.
enum class ASN1Status : int {
    ok = 0,
    unexpected_end = -1,
    unexpected_tag = -2,
    bad_length = -3,
    bad_value = -4,
    trailing_bytes = -5,
    nested_too_deeply = -6,
    nothing_to_encode = -7,
    buffer_too_small = -8,
};

[[nodiscard]] constexpr int code(ASN1Status status) { return static_cast<int>(status); }

/// The last failure of a context, in the terms of a person who looks at the bytes.
struct ASN1Failure {
    ASN1Status status = ASN1Status::ok;
    std::string element;      ///< Path of field names, "Certificate.tbsCertificate.serialNumber".
    std::uint32_t offset = 0; ///< Octets from the start of the bytes that were given.
    std::string expected;
    std::string found;
};

/// The memory, the last failure and the read position that one use of the runtime works with.
/// Not safe to share between threads.
struct ASN1CTXT {
    Arena memory;
    ASN1Failure failure;
    ByteView unread;         ///< What the xd_ functions have still to read.
    std::uint32_t flags = 0; ///< Of enum ASN1Flag.
};

/// How a context encodes.
enum class ASN1Flag : std::uint32_t {
    open_type = 128, ///< A part of some other text: no XML declaration in front.
    canonical = 512, ///< No white space between elements (X.693 9).
};

/// An ASN1CTXT shared by counting: a message buffer holds one reference, and so does every decoded
/// structure that was bound to it. The last one to go frees all memory of the context.
class ASN1Context {
  public:
    ASN1Context(const ASN1Context&) = delete;
    ASN1Context& operator=(const ASN1Context&) = delete;

    /// A new context with one reference, which belongs to the caller.
    [[nodiscard]] static ASN1Context* create() { return new ASN1Context; }

    void _ref() { ++references_; }
    void _unref() {
        if (--references_ == 0) {
            delete this;
        }
    }
    [[nodiscard]] ASN1CTXT& getCtxt() { return ctxt_; }

  private:
    ASN1Context() = default;
    ~ASN1Context() = default;

    ASN1CTXT ctxt_;
    std::uint32_t references_ = 1;
};

/// One counted reference to an ASN1Context, or none.
class ASN1ContextPtr {
  public:
    ASN1ContextPtr() = default;
    /// Adds a reference of its own; `context` may be null.
    explicit ASN1ContextPtr(ASN1Context* context) : context_(context) {
        if (context_ != nullptr) {
            context_->_ref();
        }
    }
    /// Takes over the caller's reference.
    [[nodiscard]] static ASN1ContextPtr adopt(ASN1Context* context) {
        ASN1ContextPtr pointer;
        pointer.context_ = context;
        return pointer;
    }
    ASN1ContextPtr(const ASN1ContextPtr& other) : ASN1ContextPtr(other.context_) {}
    ASN1ContextPtr(ASN1ContextPtr&& other) noexcept
        : context_(std::exchange(other.context_, nullptr)) {}
    ASN1ContextPtr& operator=(ASN1ContextPtr other) noexcept {
        std::swap(context_, other.context_);
        return *this;
    }
    ~ASN1ContextPtr() {
        if (context_ != nullptr) {
            context_->_unref();
        }
    }

    [[nodiscard]] ASN1Context* get() const { return context_; }

  private:
    ASN1Context* context_ = nullptr;
};

/// Prepares a context that needs no buffer. Returns 0; its memory is freed by rtFreeContext, or
/// with the object.
[[nodiscard]] int rtInitContext(ASN1CTXT& ctxt);

/// Frees all memory of the context and forgets its flags and its last failure.
void rtFreeContext(ASN1CTXT& ctxt);

/// Sets a flag of the context. It stays set until rtFreeContext.
void rtCtxtSetFlag(ASN1CTXT& ctxt, ASN1Flag flag);
[[nodiscard]] bool rtCtxtTestFlag(const ASN1CTXT& ctxt, ASN1Flag flag);

/// `size` bytes that live as long as the context. Throws std::bad_alloc.
[[nodiscard]] void* rtMemHeapAlloc(ASN1CTXT& ctxt, std::size_t size);

/// The last failure of the context as one line: the element, its offset, what was expected there
/// and what was found. "no error" when nothing has failed.
[[nodiscard]] std::string rtErrGetText(const ASN1CTXT& ctxt);

/// Octets of the input as an error text quotes them: on one line, cut after the first 40, with "?"
/// for each that is no printable character of ASCII.
[[nodiscard]] std::string quoted(std::string_view octets);

/// Records a failure and returns its code.
int rtErrSetData(ASN1CTXT& ctxt, ASN1Failure failure);

} // namespace norvane
