#include "platform/retrieval/CacheEntry.h"
#include "platform/retrieval/CrlMark.h"

#include <norvane/wincrypt.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace {

using norvane::Digest;
using norvane::Digester;
using norvane::ObjectKind;
using Bytes = std::vector<std::uint8_t>;

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

/// What the first octet of an input makes of the rest.
enum Mode : std::uint8_t { response, cache_file, sealed_cache_file, mark_file, mode_count };

/// A process with a cache, and a file that it retrieves. In memory where there is such a folder.
class Setting {
  public:
    Setting() {
        const char* const memory = "/dev/shm";
        const std::filesystem::path base =
            std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path();
        std::string pattern = (base / "norvane-fuzz-XXXXXX").string();
        require(mkdtemp(pattern.data()) != nullptr);
        folder_ = pattern;
        write(folder_ / "norvane.conf", std::string_view("[retrieval]\nschemes = file http\n"));
        setenv("NORVANE_CONFIG", (folder_ / "norvane.conf").c_str(), 1);
        setenv("NORVANE_CACHE_DIR", folder_.c_str(), 1);
        source = folder_ / "source";
        source_url = "file://" + source.string();
    }
    Setting(const Setting&) = delete;
    Setting& operator=(const Setting&) = delete;
    ~Setting() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    [[nodiscard]] std::filesystem::path cache_path(ObjectKind kind, const std::string& url) const {
        return folder_ / norvane::cache_file_name(kind, url);
    }

    /// Removes responses and marks.
    void empty_cache() const {
        for (const auto& file : std::filesystem::directory_iterator(folder_)) {
            const auto ending = file.path().extension();
            if (ending == norvane::cache_file_ending ||
                ending == norvane::mark_file_ending(norvane::MarkGround::served)) {
                std::filesystem::remove(file);
            }
        }
    }

    template <class Content>
    static void write(const std::filesystem::path& path, const Content& content) {
        std::ofstream file(path, std::ios::binary);
        file.write(reinterpret_cast<const char*>(content.data()),
                   static_cast<std::streamsize>(content.size()));
        require(static_cast<bool>(file.flush()));
        std::filesystem::permissions(path, std::filesystem::perms::owner_read |
                                               std::filesystem::perms::owner_write);
    }

    std::filesystem::path source;
    std::string source_url;

  private:
    std::filesystem::path folder_;
};

/// Of which the cache files of the corpus are. Only the cache is asked for it.
const std::string cached_url = "http://a/crl";

struct Result {
    DWORD error = 0;
    std::vector<Bytes> objects;
    bool operator==(const Result&) const = default;
};

Result retrieve(const std::string& url, ObjectKind kind, DWORD flags) {
    Result result;
    HCERTSTORE store = nullptr;
    const bool crls = kind == ObjectKind::crl;
    if (!CryptRetrieveObjectByUrlA(url.c_str(), crls ? CONTEXT_OID_CRL : CONTEXT_OID_CERTIFICATE,
                                   flags | CRYPT_RETRIEVE_MULTIPLE_OBJECTS, 60'000, &store, nullptr,
                                   nullptr, nullptr, nullptr)) {
        result.error = GetLastError();
        require(result.error != 0 && store == nullptr);
        return result;
    }
    PCCRL_CONTEXT crl = nullptr;
    while ((crl = CertFindCRLInStore(store, 0, 0, CRL_FIND_ANY, nullptr, crl)) != nullptr) {
        result.objects.emplace_back(crl->pbCrlEncoded, crl->pbCrlEncoded + crl->cbCrlEncoded);
    }
    require(crls || result.objects.empty());
    PCCERT_CONTEXT certificate = nullptr;
    while ((certificate = CertEnumCertificatesInStore(store, certificate)) != nullptr) {
        result.objects.emplace_back(certificate->pbCertEncoded,
                                    certificate->pbCertEncoded + certificate->cbCertEncoded);
    }
    require(!result.objects.empty());
    require(CertCloseStore(store, 0));
    return result;
}

/// Puts the right digests into what may be a file of the cache.
void seal(Bytes& file) {
    constexpr std::size_t lengths_at = 12;
    constexpr std::size_t content_digest_at = 44;
    constexpr std::size_t header_digest_at = content_digest_at + sizeof(Digest);
    constexpr std::size_t texts_at = header_digest_at + sizeof(Digest);
    if (file.size() < texts_at) {
        return;
    }
    std::uint64_t before_content = texts_at;
    for (std::size_t field = 0; field < 4; ++field) {
        std::uint64_t number = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            number |= std::uint64_t{file[lengths_at + 4 * field + i]} << (8 * i);
        }
        before_content += number;
    }
    const std::span<std::uint8_t> all(file);
    const auto texts_end =
        static_cast<std::size_t>(std::min<std::uint64_t>(before_content, file.size()));
    std::ranges::copy(Digester().add(all.subspan(texts_end)).finish(),
                      file.begin() + content_digest_at);
    std::ranges::copy(Digester()
                          .add(all.first(header_digest_at))
                          .add(all.subspan(texts_at, texts_end - texts_at))
                          .finish(),
                      file.begin() + header_digest_at);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Setting setting;
    if (size == 0) {
        return 0;
    }
    const Mode mode = static_cast<Mode>(*data % mode_count);
    Bytes content(data + 1, data + size);
    if (mode == response) {
        Setting::write(setting.source, content);
        for (const ObjectKind kind : {ObjectKind::certificate, ObjectKind::crl}) {
            const Result first = retrieve(setting.source_url, kind, 0);
            const Result cached = retrieve(setting.source_url, kind, CRYPT_CACHE_ONLY_RETRIEVAL);
            require(first.error == 0 ? cached == first : cached.error == CRYPT_E_NOT_FOUND);
            require(first.error != ERROR_INVALID_DATA); // nothing was seen before
            require(retrieve(setting.source_url, kind, 0) == first);
            setting.empty_cache();
        }
        return 0;
    }
    if (mode == mark_file) {
        const std::string name = norvane::mark_file_name({}, norvane::MarkGround::served);
        const std::string file(content.begin(), content.end());
        const auto date = norvane::decode_mark(name, file);
        require(!date || norvane::encode_mark(name, *date) == file);
        return 0;
    }
    if (mode == sealed_cache_file) {
        seal(content);
    }
    // Without the file first, so that nothing of the one before is remembered.
    const Result absent = retrieve(cached_url, ObjectKind::crl, CRYPT_CACHE_ONLY_RETRIEVAL);
    require(absent.error == CRYPT_E_NOT_FOUND);
    const auto path = setting.cache_path(ObjectKind::crl, cached_url);
    Setting::write(path, content);
    const auto entry = norvane::decode_cache_entry(content);
    const Result cached = retrieve(cached_url, ObjectKind::crl, CRYPT_CACHE_ONLY_RETRIEVAL);
    require(cached.error == CRYPT_E_NOT_FOUND || (entry && entry->url == cached_url));
    std::filesystem::remove(path);
    return 0;
}
