#pragma once

#include "asn1/ASN1Context.h"
#include "asn1/ByteView.h"
#include "platform/store/SignedData.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace norvane {

/// Larger files are not read. The largest CRLs in use take a few dozen megabytes.
inline constexpr std::size_t max_object_file_size = 268'435'456;

/// The certificates and CRLs in a file, whose form is told by its content: DER or BER of one
/// object or of a SignedData, or PEM (RFC 7468) with any number of blocks of these.
///
/// Blocks of PEM with other labels, such as private keys, are passed over. One that does not hold
/// what its label says costs only itself; but where the boundaries do not fit each other, or bytes
/// follow the element of a file in DER, nothing of the file is taken.
class ObjectFile {
  public:
    struct Object {
        ObjectKind kind{};
        ByteView bytes;
        std::uint32_t number = 0; ///< In the file, from 1.
    };
    struct Fault {
        std::uint32_t number = 0; ///< Of the object; 0 for the file as a whole.
        std::string text;
    };

    /// Views `bytes`, which must outlive the object. Throws std::bad_alloc and nothing else.
    explicit ObjectFile(ByteView bytes);

    /// In the order of the file. Of an object no more is known than that it is one element; for
    /// one out of a SignedData in BER its bytes are put into minimal lengths.
    [[nodiscard]] const std::vector<Object>& objects() const { return objects_; }
    /// What could not be taken. There is at least one fault or one object.
    [[nodiscard]] const std::vector<Fault>& faults() const { return faults_; }

  private:
    void read_pem(ByteView bytes);
    void read_block(std::string_view body);
    void read_element(ByteView bytes);
    void fail(std::string text);

    std::vector<Object> objects_;
    std::vector<Fault> faults_;
    std::uint32_t count_ = 0;
    std::deque<std::vector<std::uint8_t>> decoded_blocks_;
    ASN1CTXT ctxt_;
};

} // namespace norvane
