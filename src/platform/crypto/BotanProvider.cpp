#include "platform/crypto/BotanProvider.h"

#include "platform/crypto/Gost94Key.h"
#include "platform/crypto/GostKeys.h"

#include <algorithm>

#include <botan/hash.h>

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

class BotanProvider final : public Provider {
  public:
    [[nodiscard]] std::span<const Algorithm> algorithms() const noexcept override {
        return offered;
    }

    [[nodiscard]] std::unique_ptr<Hash> create_hash(ALG_ID algorithm) const override {
        const auto* const found = std::ranges::find(hash_names, algorithm, &HashName::algorithm);
        return found == std::end(hash_names) ? nullptr : std::make_unique<BotanHash>(found->name);
    }

    [[nodiscard]] std::shared_ptr<const PublicKey> import_key(ALG_ID algorithm, Octets parameters,
                                                              Octets key) const override {
        return algorithm == CALG_NORVANE_GOST_R3410_94
                   ? import_gost_94_key(parameters, key)
                   : import_gost_key(algorithm, parameters, key);
    }
};

} // namespace

const Provider& botan_provider() {
    static const BotanProvider& provider = *new BotanProvider;
    return provider;
}

} // namespace norvane
