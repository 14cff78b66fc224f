// A folder of its own for each test that needs files.
#pragma once

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace norvane::testing {

// Made empty, and removed with all that is in it.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "norvane-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("cannot make " + pattern);
        }
        path_ = pattern;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

    // Writes a file, and the folders on the way to it. Returns its path.
    [[nodiscard]] std::filesystem::path write(const std::filesystem::path& name,
                                              std::string_view content) const {
        const std::filesystem::path file = path_ / name;
        std::filesystem::create_directories(file.parent_path());
        if (!(std::ofstream(file, std::ios::binary) << content).flush()) {
            throw std::runtime_error("cannot write " + file.string());
        }
        return file;
    }

  private:
    std::filesystem::path path_;
};

} // namespace norvane::testing
