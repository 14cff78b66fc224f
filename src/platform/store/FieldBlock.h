#pragma once

#include "asn1/Certificate.h"
#include "platform/store/ObjectIdentifierText.h"

#include <norvane/wincrypt.h>

#include <cstddef>
#include <memory>
#include <new>
#include <optional>

namespace norvane {

/// The view as the platform's structures have it. Nobody writes through it.
[[nodiscard]] CRYPT_DATA_BLOB to_blob(ByteView view);
[[nodiscard]] CRYPT_BIT_BLOB to_bit_blob(const ASN1TBitStr& bits);

/// The moment of a decoded time, 0 for one before 1601. Nothing if it is not a time.
[[nodiscard]] std::optional<FILETIME> to_file_time(const ASN1T_Time& time);

/// One block of memory for what the platform's structures need besides the encoded bytes: texts of
/// identifiers, re-encoded names, reversed integers and arrays of extensions. It is given out piece
/// by piece; the room for each is reserved first, in any order, then the pieces are made.
class FieldBlock {
  public:
    template <class Structure>
    void reserve() {
        size_ += sizeof(Structure);
    }
    void reserve(ByteView bytes) { size_ += bytes.length; }
    void reserve(const ASN1TObjId& identifier) { size_ += object_identifier_text_room(identifier); }
    void reserve(const ASN1T_Name& name) { size_ += encoded_length(name); }
    template <class Extensions>
    void reserve_extensions(const Extensions& extensions) {
        for (const ASN1T_Extension& extension : extensions) {
            reserve<CERT_EXTENSION>();
            reserve(extension.extnID);
        }
    }

    /// Allocates what was reserved.
    void allocate() {
        memory_ = std::make_unique_for_overwrite<std::byte[]>(size_);
        next_ = memory_.get();
    }

    /// Structures are aligned, so they must be made before all that is not.
    template <class Structure>
    [[nodiscard]] Structure* make() {
        auto* const structure = new (next_) Structure{};
        next_ += sizeof(Structure);
        return structure;
    }
    [[nodiscard]] LPSTR text(const ASN1TObjId& identifier);
    [[nodiscard]] CRYPT_DATA_BLOB little_endian(ByteView integer);
    [[nodiscard]] CRYPT_DATA_BLOB encoding(const ASN1T_Name& name);
    [[nodiscard]] CRYPT_ALGORITHM_IDENTIFIER algorithm(const ASN1T_AlgorithmIdentifier& algorithm);

    /// Makes the array of extensions. To be called right after the structures are made.
    template <class Extensions>
    void extensions(const Extensions& extensions, DWORD& count, PCERT_EXTENSION& array) {
        count = 0;
        for ([[maybe_unused]] const ASN1T_Extension& extension : extensions) {
            auto* const element = make<CERT_EXTENSION>();
            array = count == 0 ? element : array;
            ++count;
        }
        PCERT_EXTENSION element = array;
        for (const ASN1T_Extension& extension : extensions) {
            element->pszObjId = text(extension.extnID);
            element->fCritical = extension.critical ? TRUE : FALSE;
            element->Value = to_blob(extension.extnValue);
            ++element;
        }
    }

  private:
    std::size_t size_ = 0;
    std::unique_ptr<std::byte[]> memory_;
    std::byte* next_ = nullptr;
};

} // namespace norvane
