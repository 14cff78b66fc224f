#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace norvane {

/// Longer lines are refused; a list of paths has room for some hundred of them.
inline constexpr std::size_t max_ini_line_length = 16'384;

/// A line of an INI file that says something. The views point into the file's text.
struct IniLine {
    enum class Kind : std::uint8_t {
        section, ///< `name` is the section that begins
        entry,   ///< `name` is the key
        fault,   ///< none of the two; `value` tells why
    };
    std::uint32_t number; ///< from 1
    Kind kind;
    std::string_view name;
    std::string_view value;
};

/// Reads the text of an INI file line by line:
///
///     [section]
///     key = value
///
/// White space around sections, keys and values does not count, nor do empty lines, lines that
/// begin with `#` or `;`, and a byte order mark of UTF-8. The key ends at the first `=`; the value
/// goes to the end of the line as it stands, without quoting, and may be empty.
class IniReader {
  public:
    /// The text must outlive the reader and the lines that it gives.
    explicit IniReader(std::string_view text);

    /// The next line that says something; nothing at the end.
    [[nodiscard]] std::optional<IniLine> next();

  private:
    [[nodiscard]] std::string_view take_line();

    std::string_view rest_;
    std::uint32_t line_number_ = 0;
};

} // namespace norvane
