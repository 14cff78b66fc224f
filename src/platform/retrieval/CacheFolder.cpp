#include "platform/retrieval/CacheFolder.h"

#include "platform/Descriptor.h"
#include "platform/FileTime.h"
#include "platform/config/Configuration.h"
#include "platform/config/UserFolders.h"
#include "platform/retrieval/CacheSweep.h"
#include "platform/retrieval/PrivateFile.h"

#include <array>
#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <mutex>
#include <span>
#include <sys/random.h>
#include <unistd.h>
#include <vector>

namespace norvane {
namespace {

constexpr mode_t folder_mode = 0700;
constexpr mode_t file_mode = 0600;
/// The times of use are kept no finer than this, so that a file in use is not touched all the time.
constexpr std::int64_t use_interval_seconds = 3600;

/// Makes the folder and those above it that are missing.
void make_folders(const std::filesystem::path& path) {
    if (mkdir(path.c_str(), folder_mode) != 0 && errno == ENOENT && path.has_parent_path()) {
        make_folders(path.parent_path());
        static_cast<void>(mkdir(path.c_str(), folder_mode));
    }
}

using Piece = std::span<const std::uint8_t>;

Piece piece_of(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

bool write_all(int file, Piece bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(file, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) {
            return false;
        }
        bytes = bytes.subspan(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    return true;
}

bool write_pieces(int file, std::span<const Piece> pieces) {
    for (const Piece piece : pieces) {
        if (!write_all(file, piece)) {
            return false;
        }
    }
    // The time of the kernel moves in steps; two files of one inode must differ in it.
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const std::array<timespec, 2> times{now, now};
    return futimens(file, times.data()) == 0 && fsync(file) == 0;
}

/// A name beside `name` that nobody else uses.
std::string temporary_name(std::string_view name) {
    std::uint64_t number = 0;
    while (getrandom(&number, sizeof number, 0) != sizeof number) {
    }
    return temporary_cache_file_name(name, number);
}

} // namespace

FileIdentity identity_of(const struct stat& status) noexcept {
    return {.device = status.st_dev,
            .inode = status.st_ino,
            .size = static_cast<std::uint64_t>(status.st_size),
            .modified_ns = to_nanoseconds(status.st_mtim)};
}

const CacheFolder& CacheFolder::instance() {
    // Not a static object with an initializer: one that a fork finds half made is never finished in
    // the child.
    static std::once_flag once;
    static const CacheFolder* folder = nullptr;
    std::call_once(once, [] {
        const char* const path = trusted_environment("NORVANE_CACHE_DIR");
        const bool absolute = path != nullptr && *path == '/';
        folder = new CacheFolder(absolute ? path : configuration().cache_folder,
                                 configuration().cache_size_bytes);
    });
    return *folder;
}

std::string CacheFolder::path_of(std::string_view name) const {
    return path_.empty() ? std::string() : (path_ / name).string();
}

bool CacheFolder::is_usable() const {
    struct stat status {};
    return !path_.empty() && lstat(path_.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           is_private(status);
}

std::optional<FolderState> CacheFolder::state(std::time_t now) const noexcept {
    struct stat status {};
    if (path_.empty() || lstat(path_.c_str(), &status) != 0 ||
        !is_settled(to_nanoseconds(status.st_ctim), std::chrono::system_clock::from_time_t(now))) {
        return std::nullopt;
    }
    return FolderState{.device = status.st_dev,
                       .inode = status.st_ino,
                       .changed_ns = to_nanoseconds(status.st_ctim)};
}

std::optional<FileIdentity> CacheFolder::write(std::string_view name,
                                               const CacheEntry& entry) const {
    const std::string header = encode_cache_header(entry);
    std::vector<std::string> lengths;
    lengths.reserve(entry.parts.size());
    std::vector<Piece> pieces = {piece_of(header)};
    std::uint64_t size = header.size();
    for (const ByteView part : entry.parts) {
        lengths.push_back(encoded_length(part.length));
        pieces.push_back(piece_of(lengths.back()));
        pieces.emplace_back(part.data, part.length);
        size += lengths.back().size() + part.length;
    }
    if (size > size_limit_) {
        return std::nullopt;
    }
    const auto identity = replace(name, pieces);
    if (identity) {
        sweep_cache(path_, size_limit_, name);
    }
    return identity;
}

std::optional<FileIdentity>
CacheFolder::replace(std::string_view name,
                     std::span<const std::span<const std::uint8_t>> pieces) const {
    if (path_.empty()) {
        return std::nullopt;
    }
    make_folders(path_);
    if (!is_usable()) {
        return std::nullopt;
    }
    const Descriptor folder(open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::string target(name);
    const std::string temporary = temporary_name(name);
    struct stat status {};
    {
        const Descriptor file(openat(folder.number(), temporary.c_str(),
                                     O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW,
                                     file_mode));
        if (file.number() < 0) {
            return std::nullopt;
        }
        if (!write_pieces(file.number(), pieces) || fstat(file.number(), &status) != 0 ||
            renameat(folder.number(), temporary.c_str(), folder.number(), target.c_str()) != 0) {
            unlinkat(folder.number(), temporary.c_str(), 0);
            return std::nullopt;
        }
    }
    static_cast<void>(fsync(folder.number()));
    return identity_of(status);
}

void CacheFolder::note_use(const std::string& path, const struct stat& status) noexcept {
    if (std::time(nullptr) - status.st_atim.tv_sec < use_interval_seconds) {
        return;
    }
    std::array<timespec, 2> times{};
    times[0].tv_nsec = UTIME_NOW;
    times[1].tv_nsec = UTIME_OMIT;
    static_cast<void>(utimensat(AT_FDCWD, path.c_str(), times.data(), AT_SYMLINK_NOFOLLOW));
}

} // namespace norvane
