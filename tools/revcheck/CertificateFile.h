#pragma once

#include "values/ASN1Blob.h"

#include <filesystem>
#include <stdexcept>
#include <vector>

namespace norvane {

/// A file that cannot be read or holds no certificate; `what` names the file and the fault.
class FileError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The certificates of a file, in their order: one in DER, or all of a PEM file. They are not
/// looked into. Throws FileError.
[[nodiscard]] std::vector<CACMPT_BLOB> read_certificates(const std::filesystem::path& path);

} // namespace norvane
