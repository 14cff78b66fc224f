#include "asn1/Tag.h"

#include <array>
#include <cstdio>

namespace norvane {
namespace {

struct TagName {
    Tag tag;
    const char* name;
};

constexpr std::array tag_names{
    TagName{Tag::boolean, "BOOLEAN"},
    TagName{Tag::integer, "INTEGER"},
    TagName{Tag::bit_string, "BIT STRING"},
    TagName{Tag::octet_string, "OCTET STRING"},
    TagName{Tag::null, "NULL"},
    TagName{Tag::object_identifier, "OBJECT IDENTIFIER"},
    TagName{Tag::enumerated, "ENUMERATED"},
    TagName{Tag::utf8_string, "UTF8String"},
    TagName{Tag::printable_string, "PrintableString"},
    TagName{Tag::teletex_string, "TeletexString"},
    TagName{Tag::ia5_string, "IA5String"},
    TagName{Tag::utc_time, "UTCTime"},
    TagName{Tag::generalized_time, "GeneralizedTime"},
    TagName{Tag::universal_string, "UniversalString"},
    TagName{Tag::bmp_string, "BMPString"},
    TagName{Tag::sequence, "SEQUENCE"},
    TagName{Tag::set, "SET"},
};

constexpr std::uint8_t class_mask = 0xc0;
constexpr std::uint8_t context_class = 0x80;

} // namespace

std::string tag_name(Tag tag) {
    for (const TagName& row : tag_names) {
        if (row.tag == tag) {
            return row.name;
        }
        if (constructed(row.tag) == tag) {
            return std::string(row.name) + " in segments";
        }
    }
    if ((octet(tag) & class_mask) == context_class && (octet(tag) & tag_number_mask) != 31) {
        return "[" + std::to_string(octet(tag) & tag_number_mask) + "]" +
               (is_constructed(tag) ? " constructed" : "");
    }
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "tag 0x%02x", octet(tag));
    return text.data();
}

} // namespace norvane
