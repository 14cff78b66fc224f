#include "platform/store/ByteHash.h"

#include "platform/LazyObject.h"

#include <cerrno>
#include <cstring>
#include <system_error>
#include <unistd.h>

namespace norvane {
namespace {

__extension__ using Product = unsigned __int128;

constexpr std::uint32_t block_size = 16;

struct Secrets {
    std::uint64_t first = 0;
    std::uint64_t second = 0;
    std::uint64_t start = 0;

    Secrets() {
        if (getentropy(this, sizeof *this) != 0) {
            throw std::system_error(errno, std::generic_category(), "getentropy");
        }
    }
};

/// Both halves of the product, so that every bit of either factor reaches every bit of the result.
std::uint64_t mix(std::uint64_t a, std::uint64_t b) {
    const Product product = Product{a} * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

std::uint64_t mix_block(std::uint64_t hash, const std::uint8_t* block, const Secrets& secrets) {
    std::uint64_t halves[2];
    std::memcpy(halves, block, block_size);
    return mix(halves[0] ^ secrets.first, halves[1] ^ hash);
}

std::uint64_t mix_bytes(std::uint64_t hash, ByteView bytes, const Secrets& secrets) {
    const std::uint8_t* block = bytes.data;
    std::uint32_t left = bytes.length;
    for (; left >= block_size; left -= block_size, block += block_size) {
        hash = mix_block(hash, block, secrets);
    }
    if (left != 0) {
        std::uint8_t last[block_size] = {};
        std::memcpy(last, block, left);
        hash = mix_block(hash, last, secrets);
    }
    return hash;
}

constinit LazyObject<const Secrets> process_secrets;

} // namespace

std::uint64_t byte_hash(ByteView bytes) {
    const Secrets& secrets = process_secrets.get(std::make_unique<const Secrets>);
    constexpr std::uint32_t end_size = 64 << 10;
    std::uint64_t hash = secrets.start;
    if (bytes.length <= 2 * end_size) {
        hash = mix_bytes(hash, bytes, secrets);
    } else {
        hash = mix_bytes(hash, {bytes.data, end_size}, secrets);
        hash = mix_bytes(hash, {bytes.data + (bytes.length - end_size), end_size}, secrets);
    }
    return mix(hash ^ secrets.second, secrets.first ^ bytes.length);
}

} // namespace norvane
