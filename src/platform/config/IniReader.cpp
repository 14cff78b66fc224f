#include "platform/config/IniReader.h"

#include "platform/config/Trim.h"

#include <algorithm>

namespace norvane {
namespace {

IniLine parse_line(std::uint32_t number, std::string_view line) {
    const auto fault = [number](std::string_view why) {
        return IniLine{.number = number, .kind = IniLine::Kind::fault, .name = {}, .value = why};
    };
    if (line.size() > max_ini_line_length) {
        return fault("the line is too long");
    }
    if (line.find('\0') != line.npos) {
        return fault("the line has a zero byte");
    }
    if (line.front() == '[') {
        if (line.back() != ']') {
            return fault("the name of the section has no closing bracket");
        }
        const std::string_view name = trim(line.substr(1, line.size() - 2));
        return {.number = number, .kind = IniLine::Kind::section, .name = name, .value = {}};
    }
    const std::size_t equals_sign = line.find('=');
    const std::string_view key = trim(line.substr(0, equals_sign));
    if (equals_sign == line.npos || key.empty()) {
        return fault("the line is neither a section nor a key with a value");
    }
    return {.number = number,
            .kind = IniLine::Kind::entry,
            .name = key,
            .value = trim(line.substr(equals_sign + 1))};
}

} // namespace

IniReader::IniReader(std::string_view text) : rest_(text) {
    constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
    if (rest_.starts_with(byte_order_mark)) {
        rest_.remove_prefix(byte_order_mark.size());
    }
}

std::optional<IniLine> IniReader::next() {
    while (!rest_.empty()) {
        const std::string_view line = trim(take_line());
        if (!line.empty() && line.front() != '#' && line.front() != ';') {
            return parse_line(line_number_, line);
        }
    }
    return std::nullopt;
}

std::string_view IniReader::take_line() {
    const std::size_t end = std::min(rest_.find('\n'), rest_.size());
    const std::string_view line = rest_.substr(0, end);
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    ++line_number_;
    return line;
}

} // namespace norvane
