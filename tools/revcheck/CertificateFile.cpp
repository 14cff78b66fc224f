#include "CertificateFile.h"

#include <openssl/bio.h>
#include <openssl/pem.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>

namespace norvane {
namespace {

constexpr std::string_view pem_begin = "-----BEGIN ";
constexpr std::uintmax_t max_file_size = 64U << 20U;

std::string read_file(const std::filesystem::path& path) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (!error && size > max_file_size) {
        throw FileError(path.string() + ": larger than 64 MB");
    }
    std::ifstream file(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (error || !file) {
        throw FileError(path.string() + ": cannot be read" +
                        (error ? " (" + error.message() + ")" : ""));
    }
    return bytes;
}

/// The PEM blocks of the text that are certificates.
std::vector<CACMPT_BLOB> read_pem(const std::string& text) {
    std::vector<CACMPT_BLOB> certificates;
    const std::unique_ptr<BIO, decltype(&BIO_free)> bio(
        BIO_new_mem_buf(text.data(), static_cast<int>(text.size())), BIO_free);
    char* name = nullptr;
    char* header = nullptr;
    unsigned char* bytes = nullptr;
    long length = 0;
    while (PEM_read_bio(bio.get(), &name, &header, &bytes, &length) == 1) {
        if (std::string_view(name) == "CERTIFICATE") {
            certificates.emplace_back(bytes, static_cast<std::uint32_t>(length));
        }
        OPENSSL_free(name);
        OPENSSL_free(header);
        OPENSSL_free(bytes);
    }
    return certificates;
}

} // namespace

std::vector<CACMPT_BLOB> read_certificates(const std::filesystem::path& path) {
    const std::string bytes = read_file(path);
    if (bytes.find(pem_begin) == std::string::npos) {
        return {{reinterpret_cast<const std::uint8_t*>(bytes.data()),
                 static_cast<std::uint32_t>(bytes.size())}};
    }
    std::vector<CACMPT_BLOB> certificates = read_pem(bytes);
    if (certificates.empty()) {
        throw FileError(path.string() + ": has no certificate that is whole");
    }
    return certificates;
}

} // namespace norvane
