#include "platform/ComApartment.h"
#include "platform/ForkLocks.h"
#include "platform/HResult.h"
#include "platform/ModulePath.h"
#include "platform/NeverDestroyed.h"
#include "platform/ResidentLibrary.h"
#include "platform/config/Configuration.h"
#include "platform/store/guarded.h"

#include <array>
#include <cstdio>
#include <dlfcn.h>
#include <mutex>
#include <string>

namespace {

using norvane::hresult;

using GetClassObject = HRESULT (*)(REFCLSID, REFIID, LPVOID*);

/// The components that this process has loaded, by CLSID. They stay loaded: nobody could tell when
/// the last thread has left their code.
class LoadedComponents {
  public:
    /// Finds the component of a class, loading it if need be. Returns a status.
    [[nodiscard]] HRESULT find(const std::string& class_id, GetClassObject& found) {
        {
            const std::lock_guard lock(mutex_);
            if (const auto known = components_.find(class_id); known != components_.end()) {
                found = known->second;
                return S_OK;
            }
        }
        // Without the lock, since a library may make objects while it is loaded. Two threads may
        // get here at once; both find the same library.
        const auto& configured = norvane::configuration().components;
        const auto row = configured.find(class_id);
        if (row == configured.end()) {
            return hresult(REGDB_E_CLASSNOTREG);
        }
        const std::string path = norvane::module_path(row->second).string();
        if (!norvane::is_library_present(path)) {
            return hresult(CO_E_DLLNOTFOUND);
        }
        void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr) {
            return hresult(E_UNEXPECTED);
        }
        found = reinterpret_cast<GetClassObject>(dlsym(library, "DllGetClassObject"));
        if (found == nullptr) {
            dlclose(library);
            return hresult(CO_E_ERRORINDLL);
        }
        const std::lock_guard lock(mutex_);
        components_.try_emplace(class_id, found);
        return S_OK;
    }

    void visit_lock(norvane::LockVisitor visit) { visit(mutex_); }

  private:
    std::mutex mutex_;
    norvane::ByName<GetClassObject> components_;
};

norvane::NeverDestroyed<LoadedComponents> all_loaded_components;

LoadedComponents& loaded_components() { return all_loaded_components.object; }

/// "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}"
std::string text_of(const GUID& id) {
    std::array<char, 39> text{};
    const auto& [a, b, c, d] = id;
    std::snprintf(text.data(), text.size(), "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", a,
                  b, c, d[0], d[1], d[2], d[3], d[4], d[5], d[6], d[7]);
    return text.data();
}

HRESULT create(REFCLSID class_id, IUnknown* outer, REFIID interface_id, LPVOID* object) {
    GetClassObject get_class_object = nullptr;
    HRESULT result = loaded_components().find(text_of(class_id), get_class_object);
    if (FAILED(result)) {
        return result;
    }
    void* pointer = nullptr;
    result = get_class_object(class_id, IID_IClassFactory, &pointer);
    if (FAILED(result)) {
        return result;
    }
    auto* const factory = static_cast<IClassFactory*>(pointer);
    result = factory->CreateInstance(outer, interface_id, object);
    factory->Release();
    return result;
}

} // namespace

void norvane::visit_component_locks(LockVisitor visit) { loaded_components().visit_lock(visit); }

HRESULT CoCreateInstance(REFCLSID rclsid, IUnknown* pUnkOuter, DWORD dwClsContext, REFIID riid,
                         LPVOID* ppv) noexcept {
    if (ppv == nullptr) {
        return hresult(E_POINTER);
    }
    *ppv = nullptr;
    if (!norvane::thread_has_entered_com()) {
        return hresult(CO_E_NOTINITIALIZED);
    }
    if ((dwClsContext & CLSCTX_INPROC_SERVER) == 0) {
        return hresult(REGDB_E_CLASSNOTREG);
    }
    try {
        return create(rclsid, pUnkOuter, riid, ppv);
    } catch (...) {
        return hresult(norvane::code_of_thrown({.no_memory = E_OUTOFMEMORY}));
    }
}
