#include "asn1/Arena.h"

#include <algorithm>
#include <limits>

namespace norvane {

void Arena::release() {
    while (newest_ != nullptr) {
        Chunk* chunk = newest_;
        newest_ = chunk->previous;
        ::operator delete(chunk);
    }
    next_ = nullptr;
    end_ = nullptr;
    next_chunk_size_ = first_chunk_size;
}

void* Arena::allocate_from_new_chunk(std::size_t size) {
    if (size > std::numeric_limits<std::size_t>::max() / 2) {
        throw std::bad_alloc();
    }
    const std::size_t rounded = (size + alignment - 1) & ~(alignment - 1);
    const std::size_t capacity = std::max(rounded, next_chunk_size_ - sizeof(Chunk));
    auto* chunk = static_cast<Chunk*>(::operator new(sizeof(Chunk) + capacity));
    chunk->previous = newest_;
    newest_ = chunk;
    next_chunk_size_ = std::min(next_chunk_size_ * 4, largest_chunk_size);

    auto* piece = reinterpret_cast<std::byte*>(chunk + 1);
    next_ = piece + rounded;
    end_ = piece + capacity;
    return piece;
}

} // namespace norvane
