#include "platform/crypto/GostProvider.h"

#include "platform/LazyObject.h"
#include "platform/ModulePath.h"
#include "platform/NeverDestroyed.h"
#include "platform/ResidentLibrary.h"
#include "platform/SystemFailure.h"
#include "platform/crypto/GostLibrary.h"

#include <atomic>
#include <memory>
#include <string>

namespace norvane {
namespace {

constexpr Algorithm offered[] = {
    {CALG_NORVANE_GOST_R3411_94, 256, 256, 256, "GR 34.11-94", "GOST R 34.11-94 Hash"},
    {CALG_NORVANE_GOST_R3411_2012_256, 256, 256, 256, "GR 34.11-12/256",
     "GOST R 34.11-2012 Hash, 256 bits"},
    {CALG_NORVANE_GOST_R3411_2012_512, 512, 512, 512, "GR 34.11-12/512",
     "GOST R 34.11-2012 Hash, 512 bits"},
    {CALG_NORVANE_GOST_R3410_94, 1024, 512, 1024, "GR 34.10-94", "GOST R 34.10-94 Signature"},
    {CALG_NORVANE_GOST_R3410_2001, 512, 512, 512, "GR 34.10-2001", "GOST R 34.10-2001 Signature"},
    {CALG_NORVANE_GOST_R3410_2012_256, 512, 512, 512, "GR 34.10-12/256",
     "GOST R 34.10-2012 Signature, 256 bits"},
    {CALG_NORVANE_GOST_R3410_2012_512, 1024, 1024, 1024, "GR 34.10-12/512",
     "GOST R 34.10-2012 Signature, 512 bits"},
};

constexpr const char* library_name = "norvane_gost.so";

const GostLibrary* load_library() {
    const auto entry =
        reinterpret_cast<decltype(&norvane_gost)>(resident_function(library_name, "norvane_gost"));
    const GostLibrary* const loaded = entry == nullptr ? nullptr : entry();
    if (loaded == nullptr) {
        throw SystemFailure(NTE_PROVIDER_DLL_FAIL, std::string(library_name) + " cannot be loaded");
    }
    return loaded;
}

const GostLibrary& library() {
    // Every load gives the same functions, and one that failed may succeed later.
    static constinit std::atomic<const GostLibrary*> known = nullptr;
    const GostLibrary* loaded = known.load(std::memory_order_acquire);
    if (loaded == nullptr) {
        loaded = load_library();
        known.store(loaded, std::memory_order_release);
    }
    return *loaded;
}

class GostProvider final : public Provider {
  public:
    [[nodiscard]] std::span<const Algorithm> algorithms() const override {
        static constinit LazyObject<const bool> installed;
        const bool& is_installed = installed.get([] {
            return std::make_unique<const bool>(is_library_present(module_path(library_name)));
        });
        return is_installed ? std::span(offered) : std::span<const Algorithm>();
    }
    [[nodiscard]] std::unique_ptr<Hash> create_hash(ALG_ID algorithm) const override {
        return offers(algorithm) ? library().create_hash(algorithm) : nullptr;
    }
    [[nodiscard]] std::shared_ptr<const PublicKey> import_key(ALG_ID algorithm, Octets parameters,
                                                              Octets key) const override {
        return offers(algorithm) ? library().import_key(algorithm, parameters, key) : nullptr;
    }
};

} // namespace

const Provider& gost_provider() {
    static constinit NeverDestroyed<const GostProvider> provider;
    return provider.object;
}

} // namespace norvane
