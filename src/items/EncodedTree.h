#pragma once

#include "asn1/ControlClass.h"
#include "values/ASN1Blob.h"
#include "values/EncodeValue.h"
#include "values/Exceptions.h"

#include <memory>
#include <utility>

namespace norvane {

/// The encoded bytes of an item and the structure that they decode to, which is made when it is
/// first asked for. The structure views the bytes and lies in the context of the decode buffer, so
/// it lives as long as this object and the bytes do not change; a move keeps both in place.
template <class Tree>
class EncodedTree {
  public:
    EncodedTree() = default;
    explicit EncodedTree(CACMPT_BLOB encoded)
        : encoded_(std::make_unique<CACMPT_BLOB>(std::move(encoded))) {}

    /// A copy of the bytes alone. The other tree's structure stays with it.
    [[nodiscard]] EncodedTree copy_encoded() const {
        return encoded_ == nullptr ? EncodedTree() : EncodedTree(CACMPT_BLOB(*encoded_));
    }

    /// The bytes. Throws CAException if there are none; then there is no structure either that
    /// could be encoded.
    [[nodiscard]] const CACMPT_BLOB& encoded() const {
        if (encoded_ == nullptr) {
            throw CAException("No source for fill_encoded", source_module::chain_base, __LINE__);
        }
        return *encoded_;
    }

    /// The structure, or null if there are no bytes. Throws Asn1Exception, at every call, if the
    /// bytes do not decode.
    [[nodiscard]] const Tree* decoded() const {
        fill_decoded();
        return decoded_.get();
    }

    /// The structure. Throws as encoded() and decoded() do.
    [[nodiscard]] const Tree& tree() const {
        static_cast<void>(encoded());
        fill_decoded();
        return *decoded_;
    }

    [[nodiscard]] bool is_decoded() const { return decoded_ != nullptr; }

  private:
    void fill_decoded() const {
        if (decoded_ != nullptr || encoded_ == nullptr) {
            return;
        }
        decode_buffer_.setBuffer(encoded_->data, encoded_->length);
        auto structure = std::make_unique<Tree>();
        ASN1C<Tree> control(decode_buffer_, *structure);
        if (control.DecodeFrom(decode_buffer_) < 0) {
            throw Asn1Exception(rtErrGetText(decode_buffer_.getCtxt()), source_module::chain_base,
                                __LINE__);
        }
        decoded_ = std::move(structure);
    }

    mutable CACMPT_ASN1BERDecodeBuffer decode_buffer_;
    std::unique_ptr<CACMPT_BLOB> encoded_;
    mutable std::unique_ptr<Tree> decoded_;
};

} // namespace norvane
