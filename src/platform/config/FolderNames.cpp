#include "platform/config/FolderNames.h"

#include <cerrno>
#include <dirent.h>
#include <memory>
#include <string_view>

namespace norvane {
namespace {

struct CloseFolder {
    void operator()(DIR* folder) const noexcept { closedir(folder); }
};

} // namespace

std::variant<std::vector<std::string>, int> names_in_folder(const std::filesystem::path& path) {
    const std::unique_ptr<DIR, CloseFolder> folder(opendir(path.c_str()));
    if (folder == nullptr) {
        return errno;
    }
    std::vector<std::string> names;
    for (;;) {
        errno = 0;
        // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread reads through this stream
        const dirent* const entry = readdir(folder.get());
        if (entry == nullptr && errno != 0) {
            return errno;
        }
        if (entry == nullptr) {
            return names;
        }
        const std::string_view name = &entry->d_name[0];
        if (name != "." && name != "..") {
            names.emplace_back(name);
        }
    }
}

} // namespace norvane
