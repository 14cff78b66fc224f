#include "platform/crypto/Gost94Key.h"
#include "platform/crypto/GostKeys.h"
#include "platform/crypto/GostLibrary.h"

#include <algorithm>

#include <botan/hash.h>

namespace norvane {
namespace {

struct HashName {
    ALG_ID algorithm;
    const char* name;
};

constexpr HashName hash_names[] = {
    {CALG_NORVANE_GOST_R3411_94, "GOST-R-34.11-94"},
    {CALG_NORVANE_GOST_R3411_2012_256, "Streebog-256"},
    {CALG_NORVANE_GOST_R3411_2012_512, "Streebog-512"},
};

class BotanHash final : public Hash {
  public:
    explicit BotanHash(const char* name) : hash_(Botan::HashFunction::create_or_throw(name)) {}

    void update(Octets bytes) override { hash_->update(bytes.data(), bytes.size()); }

    Digest finish() override {
        Digest digest;
        digest.size = hash_->output_length();
        hash_->final(digest.octets.data());
        return digest;
    }

  private:
    std::unique_ptr<Botan::HashFunction> hash_;
};

std::unique_ptr<Hash> create_hash(ALG_ID algorithm) {
    const auto* const found = std::ranges::find(hash_names, algorithm, &HashName::algorithm);
    return found == std::end(hash_names) ? nullptr : std::make_unique<BotanHash>(found->name);
}

std::shared_ptr<const PublicKey> import_key(ALG_ID algorithm, Octets parameters, Octets key) {
    return algorithm == CALG_NORVANE_GOST_R3410_94 ? import_gost_94_key(parameters, key)
                                                   : import_gost_key(algorithm, parameters, key);
}

} // namespace
} // namespace norvane

__attribute__((visibility("default"))) const norvane::GostLibrary* norvane_gost() noexcept {
    static constexpr norvane::GostLibrary functions{norvane::create_hash, norvane::import_key};
    return &functions;
}
