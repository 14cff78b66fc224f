#include "DrawnText.h"

#include "Text.h"

#include <algorithm>

namespace norvane {
namespace {

constexpr std::string_view ellipsis = "\u2026";
constexpr std::size_t longest_character = 4; ///< octets of UTF-8
constexpr unsigned first_wide_lead = 0xe3;   ///< of U+3000; those before it are rarely wide

bool continues_character(char octet) {
    return (static_cast<unsigned char>(octet) & 0xc0U) == 0x80U;
}

/// The octets of the character at `place`.
std::size_t length_at(std::string_view text, std::size_t place) {
    std::size_t end = place + 1;
    while (end < text.size() && continues_character(text[end])) {
        ++end;
    }
    return end - place;
}

std::size_t columns_at(std::string_view text, std::size_t place) {
    return static_cast<unsigned char>(text[place]) >= first_wide_lead ? 2 : 1;
}

/// The end of what of the text goes into so many columns.
std::size_t end_of_columns(std::string_view text, std::size_t columns) {
    std::size_t place = 0;
    std::size_t used = 0;
    while (place < text.size() && used + columns_at(text, place) <= columns) {
        used += columns_at(text, place);
        place += length_at(text, place);
    }
    return place;
}

/// The beginning of what at the end of the text goes into so many columns.
std::size_t begin_of_columns(std::string_view text, std::size_t columns) {
    std::size_t place = text.size();
    std::size_t used = 0;
    while (place > 0) {
        std::size_t before = place - 1;
        while (before > 0 && continues_character(text[before])) {
            --before;
        }
        used += columns_at(text, before);
        if (used > columns) {
            break;
        }
        place = before;
    }
    return place;
}

} // namespace

std::string shortened(std::string_view text, std::size_t columns) {
    // What lies beyond is never shown, so a name of any length costs no more than this.
    const std::size_t enough = columns * longest_character;
    std::string all = text.size() <= 2 * enough
                          ? printable(text)
                          : printable(text.substr(0, enough)) + std::string(ellipsis) +
                                printable(text.substr(text.size() - enough));
    if (end_of_columns(all, columns) == all.size()) {
        return all;
    }
    const std::size_t head = (columns - 1) / 2;
    return all.substr(0, end_of_columns(all, head)) + std::string(ellipsis) +
           all.substr(begin_of_columns(all, columns - 1 - head));
}

std::vector<std::string> folded(std::string_view text, std::size_t columns) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        std::size_t end = std::max(end_of_columns(text, columns), length_at(text, 0));
        std::size_t next = end;
        if (end < text.size()) {
            const std::size_t space = text.substr(0, end + 1).rfind(' ');
            if (space != text.npos && space != 0) {
                end = space;
                next = space + 1;
            }
        }
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(next);
    }
    return lines;
}

} // namespace norvane
