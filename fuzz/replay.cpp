// Runs a fuzz target over every file of the folders given as arguments, so that the committed
// corpus is a test with any compiler. Fails when a folder is missing or empty; a fault of the
// target ends the program as it would end libFuzzer.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

/// Hands the file's bytes to the target in a block of exactly their size, in which the address
/// sanitizer sees a read past the end.
void replay_file(const fs::path& path) {
    const std::size_t size = fs::file_size(path);
    const auto block = std::make_unique<char[]>(size);
    std::ifstream file(path, std::ios::binary);
    if (!file.read(block.get(), static_cast<std::streamsize>(size))) {
        throw std::runtime_error("cannot read " + path.string());
    }
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(block.get()), size);
}

/// Replays all files below the folder. Throws if there is none.
std::size_t replay_folder(const fs::path& folder) {
    std::size_t count = 0;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            replay_file(entry.path());
            ++count;
        }
    }
    if (count == 0) {
        throw std::runtime_error(folder.string() + " has no files");
    }
    return count;
}

} // namespace

int main(int argc, char** argv) {
    try {
        const std::span<char*> arguments(argv, static_cast<std::size_t>(argc));
        if (arguments.size() < 2) {
            throw std::runtime_error("no folders given");
        }
        for (const char* folder : arguments.subspan(1)) {
            std::printf("%s: %zu inputs\n", folder, replay_folder(folder));
        }
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "replay: %s\n", fault.what());
        return 1;
    }
    return 0;
}
