#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace norvane {

/// A file that cannot be written; `what` is the reason, without its name.
class OutputError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Writes the file whole or not at all: what was there before stays until all is written. Only a
/// regular file is replaced, and of a symbolic link that to which it leads. Throws OutputError.
void write_whole_file(const std::string& path, std::string_view content);

} // namespace norvane
