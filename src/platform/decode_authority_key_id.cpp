#include "platform/decode_authority_key_id.h"

#include "asn1/Decode.h"
#include "asn1/ExtensionValues.h"
#include "platform/store/ObjectFault.h"
#include "platform/store/ObjectIdentifierText.h"
#include "platform/store/guarded.h"

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>

namespace norvane {
namespace {

/// Lays out what a structure points to behind it. Without memory it only counts the room.
class Layout {
  public:
    explicit Layout(void* memory) : memory_(static_cast<BYTE*>(memory)) {}

    /// Room for `count` values; null while counting.
    template <class Value>
    Value* take(std::size_t count = 1) {
        size_ = (size_ + alignof(Value) - 1) / alignof(Value) * alignof(Value);
        const std::size_t start = size_;
        size_ += count * sizeof(Value);
        return memory_ == nullptr ? nullptr : reinterpret_cast<Value*>(memory_ + start);
    }

    [[nodiscard]] CRYPT_DATA_BLOB blob(ByteView bytes) {
        BYTE* const copy = take<BYTE>(bytes.length);
        if (copy != nullptr) {
            std::ranges::copy(bytes, copy);
        }
        return {bytes.length, copy};
    }

    [[nodiscard]] CRYPT_DATA_BLOB little_endian(ByteView integer) {
        const CRYPT_DATA_BLOB octets = blob(integer);
        if (octets.pbData != nullptr) {
            std::reverse(octets.pbData, octets.pbData + octets.cbData);
        }
        return octets;
    }

    [[nodiscard]] LPWSTR wide(ByteView ascii) {
        auto* const text = take<WCHAR>(std::size_t{ascii.length} + 1);
        if (text != nullptr) {
            *std::ranges::copy(ascii, text).out = u'\0';
        }
        return text;
    }

    [[nodiscard]] LPSTR text(const ASN1TObjId& identifier) {
        std::string digits(object_identifier_text_room(identifier), '\0');
        const char* const end = write_object_identifier_text(identifier, digits.data());
        const auto length = static_cast<std::size_t>(end - digits.data());
        auto* const copy = take<CHAR>(length);
        if (copy != nullptr) {
            std::copy_n(digits.data(), length, copy);
        }
        return copy;
    }

    [[nodiscard]] std::size_t size() const { return size_; }

  private:
    BYTE* memory_;
    std::size_t size_ = 0;
};

/// OtherName ::= SEQUENCE { type-id OBJECT IDENTIFIER, value [0] EXPLICIT ANY }
struct OtherName {
    ASN1TObjId type;
    ByteView value;
};

DWORD read_other_name(ByteView content, OtherName& name) {
    ASN1CTXT ctxt;
    DecodeAttempt attempt{ctxt, content};
    Reader fields(attempt, content, "OtherName");
    name.type = fields.object_identifier(Tag::object_identifier, "type-id");
    Reader value = fields.enter(constructed(context(0)), "value");
    name.value = value.any(nullptr);
    value.finish();
    fields.finish();
    return attempt.failed() ? object_fault(ctxt).error : ERROR_SUCCESS;
}

/// The values of one GeneralName. Returns an error code.
DWORD lay_out_name(const ASN1T_GeneralName& name, Layout& layout, CERT_ALT_NAME_ENTRY& entry) {
    constexpr std::uint8_t last_ascii = 0x7F;
    entry.dwAltNameChoice = name.t;
    switch (name.t) {
    case ASN1T_GeneralName::otherName: {
        OtherName other;
        if (const DWORD error = read_other_name(name.value, other); error != ERROR_SUCCESS) {
            return error;
        }
        auto* const place = layout.take<CERT_OTHER_NAME>();
        const CERT_OTHER_NAME laid_out{layout.text(other.type), layout.blob(other.value)};
        if (place != nullptr) {
            *place = laid_out;
        }
        entry.pOtherName = place;
        return ERROR_SUCCESS;
    }
    case ASN1T_GeneralName::rfc822Name:
    case ASN1T_GeneralName::dNSName:
    case ASN1T_GeneralName::uniformResourceIdentifier:
        if (std::ranges::any_of(name.value, [](auto octet) { return octet > last_ascii; })) {
            return CRYPT_E_INVALID_IA5_STRING;
        }
        entry.pwszURL = layout.wide(name.value);
        return ERROR_SUCCESS;
    case ASN1T_GeneralName::directoryName:
    case ASN1T_GeneralName::iPAddress:
        entry.DirectoryName = layout.blob(name.value);
        return ERROR_SUCCESS;
    case ASN1T_GeneralName::registeredID:
        if (!ASN1TObjId::well_formed(name.value)) {
            return CRYPT_E_ASN1_CORRUPT;
        }
        entry.pszRegisteredID = layout.text(ASN1TObjId(name.value));
        return ERROR_SUCCESS;
    default:
        return ERROR_SUCCESS;
    }
}

DWORD lay_out(const ASN1T_AuthorityKeyIdentifier& tree, Layout& layout) {
    CERT_AUTHORITY_KEY_ID2_INFO info{};
    auto* const place = layout.take<CERT_AUTHORITY_KEY_ID2_INFO>();
    auto* const entries = layout.take<CERT_ALT_NAME_ENTRY>(tree.authorityCertIssuer.elements.count);
    info.AuthorityCertIssuer = {tree.authorityCertIssuer.elements.count, entries};
    auto* next = entries;
    for (const ASN1T_GeneralName& name : tree.authorityCertIssuer.elements) {
        CERT_ALT_NAME_ENTRY entry{};
        if (const DWORD error = lay_out_name(name, layout, entry); error != ERROR_SUCCESS) {
            return error;
        }
        if (next != nullptr) {
            *next++ = entry;
        }
    }
    info.KeyId = layout.blob(tree.keyIdentifier);
    info.AuthorityCertSerialNumber = layout.little_endian(tree.authorityCertSerialNumber.content());
    if (place != nullptr) {
        *place = info;
    }
    return ERROR_SUCCESS;
}

DWORD decode_into(std::span<const BYTE> encoded, const StructureBuffer& out) {
    ASN1CTXT ctxt;
    ASN1T_AuthorityKeyIdentifier tree;
    const ByteView bytes{encoded.data(), static_cast<std::uint32_t>(encoded.size())};
    if (decode_element(ctxt, bytes, tree) < 0) {
        return object_fault(ctxt).error;
    }
    Layout room(nullptr);
    if (const DWORD error = lay_out(tree, room); error != ERROR_SUCCESS) {
        return error;
    }
    if (room.size() > std::numeric_limits<DWORD>::max()) {
        return CRYPT_E_ASN1_LARGE;
    }
    const DWORD error = out.reserve(static_cast<DWORD>(room.size()));
    if (error != ERROR_SUCCESS || out.info == nullptr) {
        return error;
    }
    Layout layout(out.info);
    return lay_out(tree, layout);
}

} // namespace

DWORD decode_authority_key_id(std::span<const BYTE> encoded, const StructureBuffer& out) noexcept {
    try {
        return decode_into(encoded, out);
    } catch (...) {
        return code_of_thrown();
    }
}

} // namespace norvane
