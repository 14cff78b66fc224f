#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

namespace norvane {

/// Memory that is given out piece by piece and freed all at once. Objects made in it are never
/// destroyed, so they hold no resource of their own.
class Arena {
  public:
    Arena() = default;
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;
    ~Arena() { release(); }

    /// At least `size` bytes, aligned for any object; never null. Throws std::bad_alloc.
    [[nodiscard]] void* allocate(std::size_t size) {
        const std::size_t rounded = (size + alignment - 1) & ~(alignment - 1);
        if (rounded < size || rounded >= static_cast<std::size_t>(end_ - next_)) {
            return allocate_from_new_chunk(size);
        }
        void* piece = next_;
        next_ += rounded;
        return piece;
    }

    template <class T, class... Arguments>
    [[nodiscard]] T* make(Arguments&&... arguments) {
        static_assert(alignof(T) <= alignment);
        return new (allocate(sizeof(T))) T{std::forward<Arguments>(arguments)...};
    }

    /// Frees everything that was given out.
    void release();

  private:
    static constexpr std::size_t alignment = alignof(std::max_align_t);

    struct alignas(std::max_align_t) Chunk {
        Chunk* previous;
    };

    [[nodiscard]] void* allocate_from_new_chunk(std::size_t size);

    std::byte* next_ = nullptr;
    std::byte* end_ = nullptr;
    Chunk* newest_ = nullptr;
    std::size_t next_chunk_size_ = first_chunk_size;

    /// Holds what a typical certificate decodes to in one piece, a large one in two or three.
    static constexpr std::size_t first_chunk_size = 4096;
    static constexpr std::size_t largest_chunk_size = 65536;
};

} // namespace norvane
