#include "FileContent.h"

#include "asn1/LargePages.h"
#include "platform/Descriptor.h"
#include "platform/UnreadableFile.h"
#include "platform/store/ObjectFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <variant>

namespace norvane {
namespace {

bool is_regular(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

template <class Read>
Read read_or_throw(std::variant<Read, FileFault> outcome) {
    if (const auto* const fault = std::get_if<FileFault>(&outcome)) {
        throw InputError(fault->text);
    }
    return std::get<Read>(std::move(outcome));
}

FileBytes read_file(const std::string& path) {
    try {
        return read_or_throw(read_whole_file(path, {.max_size = max_object_file_size,
                                                    .prepare = prefer_large_pages}))
            .bytes;
    } catch (const UnreadableFile& file) {
        throw InputError(std::string("the file cannot be read: ") + file.what());
    }
}

/// A stream does not say how much will come.
constexpr std::size_t first_block_size = 65'536;

FileBytes read_stream(int descriptor) {
    return read_or_throw(read_to_end(descriptor, first_block_size, max_object_file_size));
}

} // namespace

FileContent FileContent::of_file(const std::string& path, FileOrigin origin) {
    if (origin == FileOrigin::in_folder || is_regular(path)) {
        return FileContent(read_file(path));
    }
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    return FileContent(read_stream(file.number()));
}

FileContent FileContent::of_standard_input() { return FileContent(read_stream(STDIN_FILENO)); }

} // namespace norvane
