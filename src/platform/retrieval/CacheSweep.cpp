#include "platform/retrieval/CacheSweep.h"

#include "platform/retrieval/CacheEntry.h"

#include <algorithm>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace norvane {
namespace {

constexpr std::size_t digest_digits = 2 * sizeof(Digest);
constexpr std::size_t number_digits = 16;
constexpr std::string_view temporary_ending = ".new";
/// No writer takes that long.
constexpr std::time_t temporary_lifetime_seconds = 3600;

struct CloseFolder {
    void operator()(DIR* folder) const noexcept { closedir(folder); }
};

/// A file that may be removed.
struct CacheFile {
    std::string name;
    struct stat status {};

    /// The newest use is the greatest; names decide between equals.
    [[nodiscard]] auto order() const {
        return std::tuple(status.st_atim.tv_sec, status.st_atim.tv_nsec, std::string_view(name));
    }
};

bool take_hexadecimal(std::string_view& text, std::size_t count) {
    const bool fits = text.size() >= count &&
                      text.substr(0, count).find_first_not_of("0123456789abcdef") == text.npos;
    text.remove_prefix(fits ? count : 0);
    return fits;
}

enum class NameForm { response, temporary, foreign };

NameForm form_of(std::string_view name) {
    if (!take_hexadecimal(name, digest_digits)) {
        return NameForm::foreign;
    }
    if (name == cache_file_ending) {
        return NameForm::response;
    }
    const bool temporary = name.starts_with('.') && (name.remove_prefix(1), true) &&
                           take_hexadecimal(name, number_digits) && name == temporary_ending;
    return temporary ? NameForm::temporary : NameForm::foreign;
}

/// Removes a file unless another has taken its name.
void remove_file(int folder, const CacheFile& file) {
    struct stat now {};
    if (fstatat(folder, file.name.c_str(), &now, AT_SYMLINK_NOFOLLOW) == 0 &&
        now.st_ino == file.status.st_ino && now.st_mtim.tv_sec == file.status.st_mtim.tv_sec &&
        now.st_mtim.tv_nsec == file.status.st_mtim.tv_nsec) {
        unlinkat(folder, file.name.c_str(), 0);
    }
}

} // namespace

std::string temporary_cache_file_name(std::string_view name, std::uint64_t number) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string temporary(name.substr(0, digest_digits));
    temporary += '.';
    for (std::size_t i = 0; i < number_digits; ++i) {
        temporary += digits[number >> (4 * i) & 0x0f];
    }
    return temporary.append(temporary_ending);
}

void sweep_cache(const std::filesystem::path& path, std::uint64_t size_limit,
                 std::string_view newest) {
    const std::unique_ptr<DIR, CloseFolder> stream(opendir(path.c_str()));
    if (stream == nullptr) {
        return;
    }
    const int folder = dirfd(stream.get());
    std::vector<CacheFile> files;
    std::uint64_t total = 0;
    const std::time_t oldest_temporary = std::time(nullptr) - temporary_lifetime_seconds;
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the stream belongs to this thread
    while (const dirent* const item = readdir(stream.get())) {
        CacheFile file{.name = item->d_name};
        const NameForm form = form_of(file.name);
        if (form == NameForm::foreign ||
            fstatat(folder, item->d_name, &file.status, AT_SYMLINK_NOFOLLOW) != 0 ||
            !S_ISREG(file.status.st_mode)) {
            continue;
        }
        if (form == NameForm::temporary) {
            if (file.status.st_mtim.tv_sec < oldest_temporary) {
                remove_file(folder, file);
            }
            continue;
        }
        total += static_cast<std::uint64_t>(file.status.st_size);
        if (file.name != newest) {
            files.push_back(std::move(file));
        }
    }
    std::ranges::sort(files, {}, &CacheFile::order);
    for (const CacheFile& file : files) {
        if (total <= size_limit) {
            return;
        }
        remove_file(folder, file);
        total -= static_cast<std::uint64_t>(file.status.st_size);
    }
}

} // namespace norvane
