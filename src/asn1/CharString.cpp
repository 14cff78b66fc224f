#include "asn1/CharString.h"

#include "asn1/BerHeader.h"
#include "asn1/Decode.h"
#include "asn1/Reader.h"

#include <cstddef>

namespace norvane {
namespace {

constexpr char32_t last_character = 0x10ffff;
constexpr char32_t first_surrogate = 0xd800;
constexpr char32_t last_surrogate = 0xdfff;
constexpr char32_t first_supplementary = 0x10000;

bool is_character(char32_t c) {
    return c <= last_character && (c < first_surrogate || c > last_surrogate);
}

void append(WideString& wide, char32_t c) {
    if (c < first_supplementary) {
        wide += static_cast<WCHAR>(c);
    } else {
        c -= first_supplementary;
        wide += static_cast<WCHAR>(first_surrogate | c >> 10);
        wide += static_cast<WCHAR>(0xdc00 | (c & 0x3ff));
    }
}

int bad_text(ASN1CTXT& ctxt, const char* expected, std::size_t offset) {
    return rtErrSetData(ctxt, {.status = ASN1Status::bad_value,
                               .element = "character string",
                               .offset = static_cast<std::uint32_t>(offset),
                               .expected = expected,
                               .found = "octets that are none"});
}

/// Characters of `unit` octets each, most significant first, in the memory of the context.
template <class Character>
int read_fixed_width(ASN1CTXT& ctxt, Tag tag, std::basic_string_view<Character>& text) {
    std::string_view octets;
    if (const int status = xd_charstr(ctxt, tag, octets); status < 0) {
        return status;
    }
    constexpr std::size_t width = sizeof(Character);
    if (octets.size() % width != 0) {
        return bad_text(ctxt, "a whole number of characters", octets.size());
    }
    auto* const characters = static_cast<Character*>(rtMemHeapAlloc(ctxt, octets.size()));
    const std::size_t count = octets.size() / width;
    for (std::size_t i = 0; i < count; ++i) {
        char32_t c = 0;
        for (const char octet : octets.substr(i * width, width)) {
            c = c << 8 | static_cast<std::uint8_t>(octet);
        }
        characters[i] = static_cast<Character>(c);
    }
    text = {characters, count};
    return code(ASN1Status::ok);
}

/// Takes one character off the front of `utf8`. False if it is ill formed.
bool take_character(std::string_view& utf8, char32_t& character) {
    const auto octet = [&](std::size_t i) { return static_cast<std::uint8_t>(utf8[i]); };
    struct Form {
        std::uint8_t mask;
        std::uint8_t lead;
        char32_t least;
    };
    constexpr Form forms[] = {
        {0x80, 0x00, 0}, {0xe0, 0xc0, 0x80}, {0xf0, 0xe0, 0x800}, {0xf8, 0xf0, 0x10000}};
    std::size_t length = 0;
    for (const Form& form : forms) {
        ++length;
        if ((octet(0) & form.mask) != form.lead) {
            continue;
        }
        if (utf8.size() < length) {
            return false;
        }
        character = octet(0) & ~form.mask & 0xffU;
        for (std::size_t i = 1; i < length; ++i) {
            if ((octet(i) & 0xc0U) != 0x80) {
                return false;
            }
            character = character << 6 | (octet(i) & 0x3fU);
        }
        utf8.remove_prefix(length);
        return character >= form.least && is_character(character);
    }
    return false;
}

} // namespace

int xd_setp(ASN1CTXT& ctxt, const std::uint8_t* bytes, std::uint32_t length, Tag* tag,
            std::uint32_t* content_length) {
    ctxt.unread = {bytes, length};
    if (tag == nullptr || content_length == nullptr) {
        return code(ASN1Status::ok);
    }
    return xd_tag_len(ctxt, *tag, *content_length);
}

int xd_tag_len(ASN1CTXT& ctxt, Tag& tag, std::uint32_t& content_length) {
    BerHeader header;
    ASN1Failure failure;
    if (!read_ber_header(ctxt.unread, ctxt.unread.begin(), ctxt.unread.end(), header, failure)) {
        return rtErrSetData(ctxt, std::move(failure));
    }
    tag = static_cast<Tag>(*header.tag.data);
    content_length = header.length;
    return code(ASN1Status::ok);
}

int xd_charstr(ASN1CTXT& ctxt, Tag tag, std::string_view& text) {
    ByteView octets;
    const int status = decode_with(ctxt, ctxt.unread, DecodeReport::failure, [&](Reader& in) {
        octets = in.string(tag, "character string");
    });
    text = {reinterpret_cast<const char*>(octets.data), octets.length};
    return status;
}

int xd_16BitCharStr(ASN1CTXT& ctxt, std::u16string_view& text) {
    return read_fixed_width(ctxt, Tag::bmp_string, text);
}

int xd_32BitCharStr(ASN1CTXT& ctxt, std::u32string_view& text) {
    return read_fixed_width(ctxt, Tag::universal_string, text);
}

int rtUTF8ToWCS(ASN1CTXT& ctxt, std::string_view utf8, WideString& wide) {
    WideString converted;
    std::string_view rest = utf8;
    while (!rest.empty()) {
        char32_t character = 0;
        const std::size_t offset = utf8.size() - rest.size();
        if (!take_character(rest, character)) {
            return bad_text(ctxt, "a character in UTF-8", offset);
        }
        append(converted, character);
    }
    wide += converted;
    return code(ASN1Status::ok);
}

int rtUCSToWCSString(ASN1CTXT& ctxt, std::u32string_view characters, WideString& wide) {
    WideString converted;
    for (std::size_t i = 0; i < characters.size(); ++i) {
        if (!is_character(characters[i])) {
            return bad_text(ctxt, "a character of Unicode", i * sizeof(char32_t));
        }
        append(converted, characters[i]);
    }
    wide += converted;
    return code(ASN1Status::ok);
}

} // namespace norvane
