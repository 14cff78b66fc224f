#include "values/Exceptions.h"

#include <array>
#include <cstddef>
#include <cstdio>

#include <norvane/wincrypt.h>

namespace norvane {
namespace {

constexpr std::size_t error_text_size = 512;

// The Russian word for "error", capitalised, in code page 1251.
constexpr const char* error_word = "\xCE\xF8\xE8\xE1\xEA\xE0";

} // namespace

std::string make_exception_text(std::string_view message, std::string_view file,
                                std::uint32_t line) {
    std::string text = "Exception :'";
    text += message;
    text += "' at file:'";
    text += file;
    text += "' line:";
    text += std::to_string(static_cast<std::int32_t>(line));
    return text;
}

std::string format_error_code(std::uint32_t code) {
    std::array<char, error_text_size> text{};
    const auto prefix_length = static_cast<std::size_t>(
        std::snprintf(text.data(), text.size(), "%s 0x%x: ", error_word, code));
    const DWORD described = FormatMessageA(
        FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0,
        text.data() + prefix_length, static_cast<DWORD>(text.size() - prefix_length), nullptr);
    if (described == 0) {
        static_cast<void>(std::snprintf(text.data(), text.size(), "%s 0x%x.", error_word, code));
    }
    return text.data();
}

CAException::CAException(std::string_view message, std::string_view file, std::uint32_t line)
    : std::runtime_error(make_exception_text(message, file, line)), file_(file), line_(line) {}

CryptException::CryptException(std::uint32_t code, std::string_view file, std::uint32_t line)
    : CAException(format_error_code(code), file, line), code_(code) {}

} // namespace norvane
