#include "xer/KeyText.h"

#include "values/Base64.h"

#include <algorithm>

namespace norvane {
namespace {

char* write(std::string_view text, char* out) { return std::copy(text.begin(), text.end(), out); }

} // namespace

std::uint32_t write_key_text(std::span<const std::uint8_t> key, std::span<char> room) {
    char* const content = write(">", write(key_element, write("<", room.data())));
    auto content_length =
        static_cast<std::uint32_t>(room.size()) - opening_tag_length - closing_tag_length - 1;
    if (!base64_encode(key.data(), static_cast<std::uint32_t>(key.size()), content,
                       &content_length)) {
        return 0;
    }
    char* const end = write(">", write(key_element, write("</", content + content_length)));
    *end = '\0';
    return static_cast<std::uint32_t>(end - room.data());
}

std::string_view key_text_content(std::string_view text) {
    constexpr std::size_t n = key_element.size();
    const std::size_t length = text.size();
    const bool is_the_element =
        length >= std::size_t{opening_tag_length} + closing_tag_length && text[0] == '<' &&
        text.substr(1, n) == key_element && text[n + 1] == '>' && text[length - 1] == '>' &&
        text.substr(length - 1 - n, n) == key_element && text.substr(length - 3 - n, 2) == "</";
    return is_the_element
               ? text.substr(opening_tag_length, length - opening_tag_length - closing_tag_length)
               : std::string_view();
}

} // namespace norvane
