#include "platform/FileMaterial.h"

#include <memory>
#include <stdexcept>

#include <openssl/pem.h>
#include <openssl/pkcs7.h>
#include <openssl/x509.h>

namespace norvane::testing {
namespace {

void require(bool done) {
    if (!done)
        throw std::runtime_error("libcrypto cannot make the content of a file");
}

template <typename Object, typename Decode, typename Add>
void add_all(const std::vector<Bytes>& encoded, Decode decode, void (*free)(Object*), Add add) {
    for (const Bytes& bytes : encoded) {
        const unsigned char* in = bytes.data();
        const std::unique_ptr<Object, void (*)(Object*)> object(
            decode(nullptr, &in, static_cast<long>(bytes.size())), free);
        require(object != nullptr && add(object.get()) == 1);
    }
}

} // namespace

std::string pem(const std::string& label, const Bytes& content) {
    const std::unique_ptr<BIO, decltype(&BIO_free)> out(BIO_new(BIO_s_mem()), BIO_free);
    require(PEM_write_bio(out.get(), label.c_str(), "", content.data(),
                          static_cast<long>(content.size())) > 0);
    char* text = nullptr;
    const long length = BIO_get_mem_data(out.get(), &text);
    return {text, static_cast<std::size_t>(length)};
}

Bytes signed_data(const std::vector<Bytes>& certificates, const std::vector<Bytes>& crls) {
    const std::unique_ptr<PKCS7, decltype(&PKCS7_free)> message(PKCS7_new(), PKCS7_free);
    require(PKCS7_set_type(message.get(), NID_pkcs7_signed) == 1 &&
            PKCS7_content_new(message.get(), NID_pkcs7_data) == 1);
    add_all<X509>(certificates, d2i_X509, X509_free, [&](X509* certificate) {
        return PKCS7_add_certificate(message.get(), certificate);
    });
    add_all<X509_CRL>(crls, d2i_X509_CRL, X509_CRL_free,
                      [&](X509_CRL* crl) { return PKCS7_add_crl(message.get(), crl); });
    unsigned char* out = nullptr;
    const int length = i2d_PKCS7(message.get(), &out);
    require(length > 0);
    const std::unique_ptr<unsigned char, void (*)(unsigned char*)> owner(
        out, [](unsigned char* block) { OPENSSL_free(block); });
    return {out, out + length};
}

} // namespace norvane::testing
