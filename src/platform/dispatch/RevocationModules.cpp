#include "platform/dispatch/RevocationModules.h"

#include "platform/ForkLocks.h"
#include "platform/ModulePath.h"
#include "platform/SystemFailure.h"
#include "platform/config/Configuration.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <dlfcn.h>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace norvane {
namespace {

constexpr const char* entry_function = "DllMain";
constexpr const char* check_function = "CertDllVerifyRevocation";

using EntryFunction = BOOL(WINAPI*)(HINSTANCE, DWORD, LPVOID);

struct UnloadLibrary {
    void operator()(void* library) const { dlclose(library); }
};
using Library = std::unique_ptr<void, UnloadLibrary>;

template <class Function>
Function look_up(const Library& library, const char* name) {
    return reinterpret_cast<Function>(dlsym(library.get(), name));
}

/// A library with its entry function called, and called again at the end.
class AttachedModule {
  public:
    explicit AttachedModule(Library library) noexcept
        : library_(std::move(library)), entry_(look_up<EntryFunction>(library_, entry_function)),
          accepts_(entry_ == nullptr ||
                   entry_(library_.get(), DLL_PROCESS_ATTACH, nullptr) != FALSE) {}
    AttachedModule(AttachedModule&&) = default;
    AttachedModule& operator=(AttachedModule&&) = delete;
    ~AttachedModule() {
        if (library_) {
            detach(nullptr);
        }
    }

    [[nodiscard]] bool accepts() const noexcept { return accepts_; }
    [[nodiscard]] bool is(const Library& other) const noexcept { return library_ == other; }

    /// @param reserved null, unless the process ends.
    void detach(LPVOID reserved) const noexcept {
        if (entry_ != nullptr) {
            entry_(library_.get(), DLL_PROCESS_DETACH, reserved);
        }
    }

  private:
    Library library_;
    EntryFunction entry_;
    bool accepts_;
};

struct ModuleList {
    std::vector<AttachedModule> modules;
    std::vector<VerifyRevocation> entries;

    /// Loads a module, unless it is in the list already. One that cannot be loaded, lacks the entry
    /// for checks or refuses is left out. Throws std::bad_alloc or SystemFailure if that is for
    /// want of memory or descriptors.
    void load(const std::string& path) {
        errno = 0;
        Library library(path.empty() ? nullptr : dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
        if (!library && (errno == ENOMEM || errno == EMFILE || errno == ENFILE)) {
            throw_system_failure(errno, path + " cannot be loaded");
        }
        if (!library || std::ranges::any_of(modules, [&](const AttachedModule& other) {
                return other.is(library);
            })) {
            return;
        }
        const auto check = look_up<VerifyRevocation>(library, check_function);
        if (check == nullptr) {
            return;
        }
        AttachedModule module(std::move(library));
        if (module.accepts()) {
            entries.reserve(entries.size() + 1);
            modules.push_back(std::move(module));
            entries.push_back(check);
        }
    }
};

constinit std::atomic<bool> process_ends = false;

/// Detaches modules when the process exits. Their code stays where it is: other threads may be in
/// it.
class DetachAtExit {
  public:
    explicit DetachAtExit(const ModuleList& list) noexcept : list_(list) {}
    DetachAtExit(const DetachAtExit&) = delete;
    DetachAtExit& operator=(const DetachAtExit&) = delete;
    ~DetachAtExit() {
        process_ends = true;
        std::for_each(list_.modules.rbegin(), list_.modules.rend(),
                      [](const AttachedModule& module) { module.detach(&process_ends); });
    }

  private:
    const ModuleList& list_;
};

/// The list lives for ever, since threads may outlive the destructors of the process.
const ModuleList& load_modules() {
    auto list = std::make_unique<ModuleList>();
    for (const std::filesystem::path& name : configuration().revocation_modules) {
        list->load(module_path(name).string());
    }
    const ModuleList& loaded = *list.release();
    static const DetachAtExit detach_at_exit(loaded);
    return loaded;
}

constinit thread_local bool loads_modules = false;

/// Says for its lifetime that this thread loads modules.
class Loading {
  public:
    Loading() noexcept { loads_modules = true; }
    Loading(const Loading&) = delete;
    Loading& operator=(const Loading&) = delete;
    ~Loading() { loads_modules = false; }
};

constinit std::mutex loading_mutex; ///< Held by the thread that loads modules.
constinit std::atomic<const ModuleList*> loaded_list = nullptr;

} // namespace

/// A module that forks while it is loaded does so in the thread that holds the lock, which the
/// child has too.
void visit_module_list_locks(LockVisitor visit) {
    if (!loads_modules) {
        visit(loading_mutex);
    }
}

std::span<const VerifyRevocation> revocation_modules() {
    if (loads_modules) {
        return {};
    }
    const ModuleList* list = loaded_list.load(std::memory_order_acquire);
    if (list == nullptr) {
        const std::lock_guard lock(loading_mutex);
        list = loaded_list.load(std::memory_order_relaxed);
        if (list == nullptr) {
            const Loading loading;
            list = &load_modules();
            loaded_list.store(list, std::memory_order_release);
        }
    }
    return process_ends ? std::span<const VerifyRevocation>() : list->entries;
}

} // namespace norvane
