#include "platform/failure.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>
#include <span>

namespace {

using Bytes = std::span<const BYTE>;

constexpr int zero_terminated = -1;
constexpr char32_t last_of_basic_plane = 0xFFFF;
constexpr char32_t replacement_character = 0xFFFD;

enum class Form { well_formed, ill_formed };

/// One character taken from the head of a text.
struct Character {
    char32_t code_point;
    std::size_t length; ///< bytes that it took, at least one
    Form form;
};

Character next_latin1(Bytes text) noexcept { return {text.front(), 1, Form::well_formed}; }

/// What a lead byte of UTF-8 asks for: how many bytes follow, and the range of the first of them,
/// which leaves out overlong forms, surrogates and values above U+10FFFF (RFC 3629, section 4).
struct Sequence {
    BYTE last_lead;
    std::size_t followers;
    BYTE first_min;
    BYTE first_max;
};

/// In the order of lead bytes, each row from behind the one before it up to its `last_lead`.
constexpr Sequence sequences[] = {
    {0x7F, 0, 0x00, 0x00}, {0xC1, 0, 0x00, 0x00}, {0xDF, 1, 0x80, 0xBF}, {0xE0, 2, 0xA0, 0xBF},
    {0xEC, 2, 0x80, 0xBF}, {0xED, 2, 0x80, 0x9F}, {0xEF, 2, 0x80, 0xBF}, {0xF0, 3, 0x90, 0xBF},
    {0xF3, 3, 0x80, 0xBF}, {0xF4, 3, 0x80, 0x8F}, {0xFF, 0, 0x00, 0x00},
};

Character next_utf8(Bytes text) noexcept {
    const BYTE lead = text.front();
    if (lead <= 0x7F) {
        return {lead, 1, Form::well_formed};
    }
    const Sequence& sequence = *std::ranges::lower_bound(sequences, lead, {}, &Sequence::last_lead);
    if (sequence.followers == 0) {
        return {replacement_character, 1, Form::ill_formed};
    }
    char32_t code_point = lead & (0x3FU >> sequence.followers);
    BYTE min = sequence.first_min;
    BYTE max = sequence.first_max;
    for (std::size_t i = 1; i <= sequence.followers; ++i) {
        if (i == text.size() || text[i] < min || text[i] > max) {
            return {replacement_character, i, Form::ill_formed};
        }
        code_point = code_point << 6 | (text[i] & 0x3FU);
        min = 0x80;
        max = 0xBF;
    }
    return {code_point, sequence.followers + 1, Form::well_formed};
}

struct CodePageRow {
    UINT code_page;
    DWORD known_flags;
    Character (*next)(Bytes text) noexcept;
};

constexpr CodePageRow code_pages[] = {
    {CP_ACP, MB_PRECOMPOSED | MB_ERR_INVALID_CHARS, next_latin1},
    {CP_UTF8, MB_ERR_INVALID_CHARS, next_utf8},
};

/// Writes a code point as UTF-16 (RFC 2781, section 2.1) to `out`, if that is not null.
///
/// @return count of units, 1 or 2.
std::size_t put_utf16(char32_t code_point, WCHAR* out) noexcept {
    const std::size_t count = code_point > last_of_basic_plane ? 2 : 1;
    if (out == nullptr) {
        return count;
    }
    if (count == 1) {
        out[0] = static_cast<WCHAR>(code_point);
    } else {
        const char32_t offset = code_point - (last_of_basic_plane + 1);
        out[0] = static_cast<WCHAR>(0xD800 | offset >> 10);
        out[1] = static_cast<WCHAR>(0xDC00 | (offset & 0x3FF));
    }
    return count;
}

/// The bytes that the caller means; nothing if the length is no length.
std::optional<Bytes> text_of(LPCSTR text, int length) noexcept {
    constexpr auto max_length = std::size_t{std::numeric_limits<int>::max()};
    if (text == nullptr || length == 0 || length < zero_terminated) {
        return std::nullopt;
    }
    const std::size_t size =
        length == zero_terminated ? std::strlen(text) + 1 : static_cast<std::size_t>(length);
    if (size > max_length) {
        return std::nullopt;
    }
    return Bytes{reinterpret_cast<const BYTE*>(text), size};
}

} // namespace

int MultiByteToWideChar(UINT CodePage, DWORD dwFlags, LPCSTR lpMultiByteStr, int cbMultiByte,
                        LPWSTR lpWideCharStr, int cchWideChar) noexcept {
    const auto text = text_of(lpMultiByteStr, cbMultiByte);
    const auto* row = std::ranges::find(code_pages, CodePage, &CodePageRow::code_page);
    const bool measure_only = cchWideChar == 0;
    const bool buffer_is_usable =
        measure_only || (cchWideChar > 0 && lpWideCharStr != nullptr &&
                         static_cast<void*>(lpWideCharStr) != lpMultiByteStr);
    if (!text || row == std::end(code_pages) || !buffer_is_usable) {
        return norvane::fail(ERROR_INVALID_PARAMETER);
    }
    if ((dwFlags & ~row->known_flags) != 0) {
        return norvane::fail(ERROR_INVALID_FLAGS);
    }

    // A byte never gives more than one unit, so the count stays within the range of the result.
    const auto capacity = static_cast<std::size_t>(cchWideChar);
    std::size_t count = 0;
    for (Bytes rest = *text; !rest.empty();) {
        const Character character = row->next(rest);
        rest = rest.subspan(character.length);
        if (character.form == Form::ill_formed && (dwFlags & MB_ERR_INVALID_CHARS) != 0) {
            return norvane::fail(ERROR_NO_UNICODE_TRANSLATION);
        }
        const std::size_t units = put_utf16(character.code_point, nullptr);
        if (!measure_only) {
            if (units > capacity - count) {
                return norvane::fail(ERROR_INSUFFICIENT_BUFFER);
            }
            put_utf16(character.code_point, lpWideCharStr + count);
        }
        count += units;
    }
    return static_cast<int>(count);
}
