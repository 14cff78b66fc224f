#include "platform/store/FileInventory.h"

#include "platform/FileTime.h"
#include "platform/config/FolderNames.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>
#include <utility>

namespace norvane {
namespace {

namespace fs = std::filesystem;

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
            .modified_ns = to_nanoseconds(status.st_mtim),
            .changed_ns = to_nanoseconds(status.st_ctim)};
}

void add_file(fs::path path, const struct stat& status, FileInventory& files) {
    files.push_back(S_ISREG(status.st_mode) ? regular(std::move(path), status)
                                            : faulty(std::move(path), EINVAL));
}

bool is_absent(int error) { return error == ENOENT || error == ENOTDIR; }

/// Whether a path leads nowhere, or through folders that this user may not enter.
bool is_unreachable(int error) {
    return error == EACCES || error == ELOOP || error == ENAMETOOLONG;
}

/// Nothing if the folder has gone.
std::vector<std::string> read_names(const fs::path& path) {
    auto outcome = names_in_folder(path);
    if (const int* const error = std::get_if<int>(&outcome)) {
        if (is_absent(*error)) {
            return {};
        }
        throw UnreadableFile(path, *error);
    }
    return std::get<std::vector<std::string>>(std::move(outcome));
}

void add_folder(const fs::path& folder, FileInventory& files) {
    std::vector<std::string> names = read_names(folder);
    std::ranges::sort(names);
    for (const std::string& name : names) {
        if (name.starts_with('.')) {
            continue;
        }
        fs::path path = folder / name;
        struct stat status {};
        if (stat(path.c_str(), &status) != 0) {
            if (!is_absent(errno)) {
                throw UnreadableFile(path, errno);
            }
            files.push_back(faulty(std::move(path), ENOENT));
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
            const int error = errno;
            if (is_unreachable(error)) {
                files.push_back(faulty(path, error));
            } else if (!is_absent(error)) {
                throw UnreadableFile(path, error);
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
    return std::ranges::any_of(
        files, [now](const InventoryFile& file) { return !is_settled(file.changed_ns, now); });
}

} // namespace norvane
