#include "sweep/Faults.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#define VISIBLE __attribute__((visibility("default")))

// The allocator of the GNU C library by its second names, which need no look-up that allocates.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

using norvane::testing::FaultKind;

// No call has such a number.
constexpr long never = 0;

struct State {
    std::atomic<FaultKind> kind = FaultKind::allocation;
    std::atomic<long> failing = never;
    std::atomic<long> count = 0;
    std::atomic<long> live = 0;
    std::atomic<bool> trace = false;
};
constinit State state;

void print_trace() {
    constexpr int most = 60;
    void* frames[most];
    backtrace_symbols_fd(frames, backtrace(frames, most), STDERR_FILENO);
}

// Whether the call that is being made is the one to fail, for which errno is set.
bool fails(FaultKind kind, int error) {
    if (state.kind != kind || ++state.count != state.failing) {
        return false;
    }
    if (state.trace) {
        print_trace();
    }
    errno = error;
    return true;
}

template <class Allocate>
void* allocate(Allocate from_system) {
    if (fails(FaultKind::allocation, ENOMEM)) {
        return nullptr;
    }
    void* const block = from_system();
    state.live += block != nullptr;
    return block;
}

template <class Function>
Function next(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

// What the system's function of this name gives, or `failed`.
template <class Function, class Result, class... Arguments>
Result open_or_fail(const char* name, Function*, Result failed, Arguments... arguments) {
    return fails(FaultKind::descriptor, EMFILE) ? failed : next<Function*>(name)(arguments...);
}

struct FromEnvironment {
    FromEnvironment() {
        using namespace norvane::testing;
        const char* const kind = std::getenv(fault_kind_variable);
        const char* const number = std::getenv(fault_number_variable);
        state.trace = std::getenv(fault_trace_variable) != nullptr;
        if (kind != nullptr && number != nullptr) {
            arm_fault(std::strcmp(kind, "descriptor") == 0 ? FaultKind::descriptor
                                                           : FaultKind::allocation,
                      std::atol(number));
        }
    }
    ~FromEnvironment() {
        const long count = disarm_fault();
        if (const char* const path = std::getenv(norvane::testing::fault_count_variable)) {
            if (std::FILE* const file = std::fopen(path, "w")) {
                std::fprintf(file, "%ld\n", count);
                std::fclose(file);
            }
        }
    }
} const from_environment;

} // namespace

extern "C" {

VISIBLE void arm_fault(FaultKind kind, long number) {
    state.kind = kind;
    state.count = 0;
    state.failing = number;
}

VISIBLE long disarm_fault() {
    state.failing = never;
    return state.count;
}

VISIBLE long live_blocks() { return state.live; }

VISIBLE void* malloc(std::size_t size) {
    return allocate([=] { return __libc_malloc(size); });
}
VISIBLE void* calloc(std::size_t count, std::size_t size) {
    return allocate([=] { return __libc_calloc(count, size); });
}
VISIBLE void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return allocate([=] { return __libc_memalign(alignment, size); });
}
VISIBLE int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
    *block = aligned_alloc(alignment, size);
    return *block == nullptr ? ENOMEM : 0;
}
VISIBLE void* realloc(void* block, std::size_t size) {
    if (fails(FaultKind::allocation, ENOMEM)) {
        return nullptr;
    }
    void* const moved = __libc_realloc(block, size);
    state.live += (moved != nullptr) - (block != nullptr && (moved != nullptr || size == 0));
    return moved;
}
VISIBLE void free(void* block) {
    state.live -= block != nullptr;
    __libc_free(block);
}

// The mode counts only where it is given; to hand on what is not there does no harm.
#define OPENS(name)                                                                                \
    VISIBLE int name(const char* path, int flags, ...) {                                           \
        std::va_list more;                                                                         \
        va_start(more, flags);                                                                     \
        const unsigned mode = va_arg(more, unsigned);                                              \
        va_end(more);                                                                              \
        using Function = int(const char*, int, ...);                                               \
        return open_or_fail(#name, static_cast<Function*>(nullptr), -1, path, flags, mode);        \
    }
OPENS(open)
OPENS(open64)
#undef OPENS

#define OPENS_AT(name)                                                                             \
    VISIBLE int name(int folder, const char* path, int flags, ...) {                               \
        std::va_list more;                                                                         \
        va_start(more, flags);                                                                     \
        const unsigned mode = va_arg(more, unsigned);                                              \
        va_end(more);                                                                              \
        using Function = int(int, const char*, int, ...);                                          \
        return open_or_fail(#name, static_cast<Function*>(nullptr), -1, folder, path, flags,       \
                            mode);                                                                 \
    }
OPENS_AT(openat)
OPENS_AT(openat64)
#undef OPENS_AT

VISIBLE std::FILE* fopen(const char* path, const char* mode) {
    return open_or_fail("fopen", &fopen, static_cast<std::FILE*>(nullptr), path, mode);
}
VISIBLE std::FILE* fopen64(const char* path, const char* mode) {
    return open_or_fail("fopen64", &fopen, static_cast<std::FILE*>(nullptr), path, mode);
}
VISIBLE DIR* opendir(const char* path) {
    return open_or_fail("opendir", &opendir, static_cast<DIR*>(nullptr), path);
}
VISIBLE int socket(int domain, int type, int protocol) noexcept {
    return open_or_fail("socket", &socket, -1, domain, type, protocol);
}
VISIBLE int dup(int descriptor) noexcept { return open_or_fail("dup", &dup, -1, descriptor); }
}
