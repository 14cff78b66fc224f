#include "platform/WideText.h"

#include "platform/store/guarded.h"

#include <algorithm>
#include <limits>

namespace norvane {
namespace {

constexpr char32_t replacement_character = 0xFFFD;

constexpr bool is_high_surrogate(char16_t unit) noexcept { return (unit & 0xFC00U) == 0xD800; }
constexpr bool is_low_surrogate(char16_t unit) noexcept { return (unit & 0xFC00U) == 0xDC00; }

/// RFC 3629, section 3.
void append_utf8(std::string& out, char32_t code_point) {
    const auto put = [&out](char32_t byte) { out.push_back(static_cast<char>(byte)); };
    if (code_point < 0x80) {
        put(code_point);
        return;
    }
    if (code_point < 0x800) {
        put(0xC0 | code_point >> 6);
    } else {
        if (code_point < 0x10000) {
            put(0xE0 | code_point >> 12);
        } else {
            put(0xF0 | code_point >> 18);
            put(0x80 | (code_point >> 12 & 0x3F));
        }
        put(0x80 | (code_point >> 6 & 0x3F));
    }
    put(0x80 | (code_point & 0x3F));
}

} // namespace

std::string to_utf8(std::u16string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t code_point = text[i];
        if (is_high_surrogate(text[i]) && i + 1 < text.size() && is_low_surrogate(text[i + 1])) {
            code_point = 0x10000 + ((code_point & 0x3FF) << 10 | (text[i + 1] & 0x3FFU));
            ++i;
        } else if (is_high_surrogate(text[i]) || is_low_surrogate(text[i])) {
            code_point = replacement_character;
        }
        append_utf8(result, code_point);
    }
    return result;
}

std::u16string to_utf16(std::string_view text) {
    if (text.empty()) {
        return {};
    }
    const auto length = static_cast<int>(text.size());
    std::u16string result(text.size(), u'\0'); // no byte gives more than one unit
    const int units = MultiByteToWideChar(CP_UTF8, 0, text.data(), length, result.data(), length);
    result.resize(static_cast<std::size_t>(units));
    return result;
}

} // namespace norvane

// NOLINTBEGIN(readability-non-const-parameter): the signature is the platform's
int WideCharToMultiByte(UINT CodePage, DWORD dwFlags, LPCWSTR lpWideCharStr, int cchWideChar,
                        LPSTR lpMultiByteStr, int cbMultiByte, LPCSTR lpDefaultChar,
                        BOOL* lpUsedDefaultChar) noexcept {
    // NOLINTEND(readability-non-const-parameter)
    const bool buffer_is_usable =
        cbMultiByte == 0 || (cbMultiByte > 0 && lpMultiByteStr != nullptr);
    if (CodePage != CP_UTF8 || dwFlags != 0 || lpWideCharStr == nullptr || cchWideChar < 1 ||
        !buffer_is_usable || lpDefaultChar != nullptr || lpUsedDefaultChar != nullptr) {
        return norvane::fail(ERROR_INVALID_PARAMETER);
    }
    return norvane::guarded({.other = ERROR_INTERNAL_ERROR}, [&]() -> int {
        const std::string text =
            norvane::to_utf8({lpWideCharStr, static_cast<std::size_t>(cchWideChar)});
        if (text.size() > std::size_t{std::numeric_limits<int>::max()}) {
            return norvane::fail(ERROR_INVALID_PARAMETER);
        }
        if (cbMultiByte != 0) {
            if (text.size() > static_cast<std::size_t>(cbMultiByte)) {
                return norvane::fail(ERROR_INSUFFICIENT_BUFFER);
            }
            std::ranges::copy(text, lpMultiByteStr);
        }
        return static_cast<int>(text.size());
    });
}
