#include "platform/store/FileInventory.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <memory>
#include <sys/stat.h>
#include <utility>

namespace norvane {
namespace {

namespace fs = std::filesystem;

std::int64_t nanoseconds(const timespec& time) {
    constexpr std::int64_t per_second = 1'000'000'000;
    return std::int64_t{time.tv_sec} * per_second + time.tv_nsec;
}

InventoryFile faulty(fs::path path, int error) {
    InventoryFile file;
    file.path = std::move(path);
    file.error = error;
    return file;
}

InventoryFile regular(fs::path path, const struct stat& status) {
    return {.path = std::move(path),
            .error = 0,
            .device = status.st_dev,
            .inode = status.st_ino,
            .size = static_cast<std::uint64_t>(status.st_size),
            .modified_ns = nanoseconds(status.st_mtim),
            .changed_ns = nanoseconds(status.st_ctim)};
}

void add_file(fs::path path, const struct stat& status, FileInventory& files) {
    files.push_back(S_ISREG(status.st_mode) ? regular(std::move(path), status)
                                            : faulty(std::move(path), EINVAL));
}

struct CloseFolder {
    void operator()(DIR* folder) const noexcept { closedir(folder); }
};

/// Adds the names of what is in a folder. Returns an errno, or 0. The iterator of the standard
/// library would end the program if there were no memory.
int read_names(const fs::path& path, std::vector<std::string>& names) {
    const std::unique_ptr<DIR, CloseFolder> folder(opendir(path.c_str()));
    if (folder == nullptr) {
        return errno;
    }
    for (;;) {
        errno = 0;
        // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread reads through this stream
        const dirent* const entry = readdir(folder.get());
        if (entry == nullptr) {
            return errno;
        }
        names.emplace_back(&entry->d_name[0]);
    }
}

void add_folder(const fs::path& folder, FileInventory& files) {
    std::vector<std::string> names;
    if (const int error = read_names(folder, names); error != 0) {
        files.push_back(faulty(folder, error));
        return;
    }
    std::ranges::sort(names);
    for (const std::string& name : names) {
        if (name.starts_with('.')) {
            continue;
        }
        fs::path path = folder / name;
        struct stat status {};
        if (stat(path.c_str(), &status) != 0) {
            files.push_back(faulty(std::move(path), errno));
        } else if (!S_ISDIR(status.st_mode)) {
            add_file(std::move(path), status, files);
        }
    }
}

} // namespace

FileInventory take_inventory(std::span<const fs::path> paths) {
    FileInventory files;
    for (const fs::path& path : paths) {
        struct stat status {};
        if (stat(path.c_str(), &status) != 0) {
            if (errno != ENOENT && errno != ENOTDIR) {
                files.push_back(faulty(path, errno));
            }
        } else if (S_ISDIR(status.st_mode)) {
            add_folder(path, files);
        } else {
            add_file(path, status, files);
        }
    }
    return files;
}

bool is_unsettled(const FileInventory& files, std::chrono::system_clock::time_point now) {
    constexpr std::chrono::nanoseconds step = std::chrono::seconds{2};
    const std::chrono::nanoseconds recent = now.time_since_epoch() - step;
    return std::ranges::any_of(
        files, [recent](const InventoryFile& file) { return file.changed_ns >= recent.count(); });
}

} // namespace norvane
