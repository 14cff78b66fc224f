#include "ReportFile.h"

#include "platform/Descriptor.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace norvane {
namespace {

constexpr mode_t new_file_mode = 0666; // The umask takes from it.

[[noreturn]] void fail() { throw OutputError(std::generic_category().message(errno)); }

/// Where the file itself lies, or is to lie.
std::string target_of(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        return path;
    }
    if (!S_ISREG(status.st_mode)) {
        throw OutputError("this is not a regular file");
    }
    std::error_code error;
    const auto target = std::filesystem::canonical(path, error);
    if (error) {
        throw OutputError(error.message());
    }
    return target.string();
}

/// A file that is removed again unless it is kept.
class NewFile {
  public:
    explicit NewFile(std::string path)
        : path_(std::move(path)),
          file_(open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, new_file_mode)) {
        if (file_.number() < 0) {
            fail();
        }
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile() {
        if (!kept_) {
            unlink(path_.c_str());
        }
    }

    void write(std::string_view content) {
        while (!content.empty()) {
            const ssize_t written = ::write(file_.number(), content.data(), content.size());
            if (written < 0 && errno != EINTR) {
                fail();
            }
            content.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
        }
        if (fsync(file_.number()) != 0) {
            fail();
        }
    }
    void keep_as(const std::string& path) {
        if (std::rename(path_.c_str(), path.c_str()) != 0) {
            fail();
        }
        kept_ = true;
    }

  private:
    std::string path_;
    Descriptor file_;
    bool kept_ = false;
};

} // namespace

void write_whole_file(const std::string& path, std::string_view content) {
    const std::string target = target_of(path);
    NewFile file(target + "." + std::to_string(getpid()) + ".new");
    file.write(content);
    file.keep_as(target);
}

} // namespace norvane
