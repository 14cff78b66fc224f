#include "platform/store/ObjectFile.h"

#include "asn1/Tag.h"
#include "platform/store/Pem.h"

#include <algorithm>
#include <string_view>

namespace norvane {
namespace {

/// RFC 7468 5, 6, 8 and 9, and names that older programs write.
constexpr std::string_view labels[] = {"CERTIFICATE", "X509 CERTIFICATE",    "X509 CRL",
                                       "PKCS7",       "PKCS #7 SIGNED DATA", "CMS"};

/// Whether this begins as a SEQUENCE of more than 127 octets, as no text does.
bool looks_binary(ByteView bytes) {
    constexpr std::uint8_t long_length_bit = 0x80;
    return bytes.length >= 2 && bytes.data[0] == octet(Tag::sequence) &&
           (bytes.data[1] & long_length_bit) != 0;
}

} // namespace

ObjectFile::ObjectFile(ByteView bytes) {
    if (looks_binary(bytes)) {
        read_element(bytes);
    } else {
        read_pem(bytes);
    }
    if (objects_.empty() && faults_.empty()) {
        fail("there is no certificate and no CRL in the file");
    }
}

void ObjectFile::read_pem(ByteView bytes) {
    PemReader reader({reinterpret_cast<const char*>(bytes.data), bytes.length});
    for (;;) {
        const auto next = reader.next();
        if (const auto* const fault = std::get_if<std::string>(&next)) {
            fail(*fault);
            return;
        }
        const auto& block = std::get<std::optional<PemReader::Block>>(next);
        if (!block) {
            return;
        }
        if (std::ranges::find(labels, block->label) != std::end(labels)) {
            read_block(block->body);
        }
    }
}

void ObjectFile::read_block(std::string_view body) {
    auto octets = decode_pem_body(body);
    if (!octets) {
        faults_.push_back({++count_, "the PEM block is not in Base64"});
        return;
    }
    const auto& kept = decoded_blocks_.emplace_back(std::move(*octets));
    read_element({kept.data(), static_cast<std::uint32_t>(kept.size())});
}

void ObjectFile::read_element(ByteView bytes) {
    std::vector<EncodedObject> found;
    if (read_objects(ctxt_, bytes, found) < 0) {
        faults_.push_back({++count_, rtErrGetText(ctxt_)});
        return;
    }
    for (const EncodedObject& object : found) {
        objects_.push_back({object.kind, object.bytes, ++count_});
    }
}

void ObjectFile::fail(std::string text) {
    objects_.clear();
    faults_.assign(1, {0, std::move(text)});
}

} // namespace norvane
