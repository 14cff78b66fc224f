#include "platform/retrieval/CrlMarks.h"

#include "platform/WholeFile.h"
#include "platform/config/FolderNames.h"
#include "platform/retrieval/CacheFolder.h"
#include "platform/retrieval/PrivateFile.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace norvane {
namespace {

constexpr std::time_t served_lifetime_seconds = 86'400;
/// The times of marks are kept no finer than this, so that they are not written all the time.
constexpr std::time_t renewal_interval_seconds = 3600;
/// A machine sees the CRLs of some hundreds of scopes.
constexpr std::size_t max_verified_marks = 4096;
constexpr std::size_t max_served_marks = 4096;
/// Of what one response brings; one with CRLs of many scopes has some dozens.
constexpr std::size_t max_new_marks = 64;

struct FoundMark {
    std::uint64_t this_update = 0; ///< 0: there is none
    std::time_t made = 0;
    bool is_hidden = false; ///< something is there that may yet turn out to be a mark
};

/// Whether a mark on the ground `served` counts. A clock that was set back does not prolong it.
bool is_alive(std::time_t made, std::time_t now) {
    return std::abs(now - made) <= served_lifetime_seconds;
}

FoundMark find(const CacheFolder& folder, const Digest& scope, MarkGround ground) {
    const std::string name = mark_file_name(scope, ground);
    const std::string path = folder.path_of(name);
    if (path.empty()) {
        return {};
    }
    const auto outcome = read_whole_file(
        path, {.max_size = mark_file_size, .more_flags = O_NOFOLLOW, .is_trusted = is_private});
    if (const auto* const fault = std::get_if<FileFault>(&outcome)) {
        return {.is_hidden = fault->kind != FileFault::Kind::absent};
    }
    if (!folder.is_usable()) {
        return {.is_hidden = true};
    }
    const auto* const file = std::get_if<WholeFile>(&outcome);
    return {.this_update = decode_mark(name, file->bytes.text()).value_or(0),
            .made = file->status.st_mtim.tv_sec};
}

/// The date of a mark that counts at present; 0 if there is none.
std::uint64_t counting(const FoundMark& mark, MarkGround ground, std::time_t now) {
    const bool counts = is_believable(mark.this_update, now) &&
                        (ground == MarkGround::verified || is_alive(mark.made, now));
    return counts ? mark.this_update : 0;
}

/// The mark files of a ground, the oldest first.
std::vector<std::pair<std::time_t, std::filesystem::path>> list(const CacheFolder& folder,
                                                                MarkGround ground) {
    std::vector<std::pair<std::time_t, std::filesystem::path>> found;
    const std::filesystem::path path = folder.path_of("");
    const auto names = names_in_folder(path);
    if (!std::holds_alternative<std::vector<std::string>>(names)) {
        return found;
    }
    for (const std::string& name : std::get<std::vector<std::string>>(names)) {
        std::filesystem::path file = path / name;
        struct stat status {};
        if (file.extension() == mark_file_ending(ground) && lstat(file.c_str(), &status) == 0) {
            found.emplace_back(status.st_mtim.tv_sec, std::move(file));
        }
    }
    std::ranges::sort(found);
    return found;
}

/// Removes what lasts no longer, and says how many new marks have room.
std::size_t make_room_for_served(const CacheFolder& folder, std::time_t now) {
    std::size_t count = 0;
    for (const auto& [made, path] : list(folder, MarkGround::served)) {
        const bool removed = !is_alive(made, now) && unlink(path.c_str()) == 0;
        count += removed ? 0 : 1;
    }
    return std::min(max_new_marks, max_served_marks - std::min(count, max_served_marks));
}

void make_room_for_verified(const CacheFolder& folder) {
    const auto marks = list(folder, MarkGround::verified);
    for (std::size_t i = 0; i + max_verified_marks <= marks.size(); ++i) {
        static_cast<void>(unlink(marks[i].second.c_str()));
    }
}

void write(const CacheFolder& folder, const CrlMark& mark, MarkGround ground) {
    const std::string name = mark_file_name(mark.scope, ground);
    const std::string file = encode_mark(name, mark.this_update);
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(file.data()), file.size());
    static_cast<void>(folder.replace(name, {&bytes, 1}));
}

} // namespace

MarkDates CrlMarks::dates(const Digest& scope, std::time_t now) const {
    constexpr std::uint64_t unknown_date = std::numeric_limits<std::uint64_t>::max();
    MarkDates dates;
    for (const MarkGround ground : {MarkGround::served, MarkGround::verified}) {
        const FoundMark found = find(folder_, scope, ground);
        dates.least = std::max(dates.least, counting(found, ground, now));
        dates.newest = std::max(dates.newest, found.is_hidden ? unknown_date : found.this_update);
    }
    return dates;
}

void CrlMarks::note_served(std::span<const CrlMark> marks, std::time_t now) const {
    std::optional<std::size_t> room; // counted when it is first needed
    for (const CrlMark& mark : marks) {
        const FoundMark verified = find(folder_, mark.scope, MarkGround::verified);
        if (!is_believable(mark.this_update, now) ||
            counting(verified, MarkGround::verified, now) >= mark.this_update) {
            continue;
        }
        const FoundMark served = find(folder_, mark.scope, MarkGround::served);
        const std::uint64_t known = counting(served, MarkGround::served, now);
        if (known > mark.this_update ||
            (known == mark.this_update && std::abs(now - served.made) < renewal_interval_seconds)) {
            continue;
        }
        if (served.this_update == 0) {
            room = room ? room : make_room_for_served(folder_, now);
            if (*room == 0) {
                continue;
            }
            --*room;
        }
        write(folder_, mark, MarkGround::served);
    }
}

void CrlMarks::note_verified(const CrlMark& mark, std::time_t now) const {
    const FoundMark known = find(folder_, mark.scope, MarkGround::verified);
    if (!is_believable(mark.this_update, now) ||
        counting(known, MarkGround::verified, now) >= mark.this_update) {
        return;
    }
    if (known.this_update == 0) {
        make_room_for_verified(folder_);
    }
    write(folder_, mark, MarkGround::verified);
}

} // namespace norvane
