#pragma once

#include "items/ChainBase.h"
#include "support/CertificateBuilder.h"
#include "support/CrlBuilder.h"

namespace norvane {

using testing::Bytes;
using testing::CertificateBuilder;
using testing::CrlBuilder;
using testing::Key;

inline CACMPT_BLOB blob(const Bytes& bytes) {
    return {bytes.data(), static_cast<std::uint32_t>(bytes.size())};
}
inline ByteView view(const Bytes& bytes) {
    return {bytes.data(), static_cast<std::uint32_t>(bytes.size())};
}
inline Bytes bytes_of(const CACMPT_BLOB& blob) { return {blob.data, blob.data + blob.length}; }

inline CertificateItem certificate(const std::vector<Bytes>& extensions) {
    return CertificateItem(blob(CertificateBuilder{.extensions = extensions}.sign(Key::ec(1))));
}
inline CRLItem crl(const CrlBuilder& builder) { return CRLItem(blob(builder.sign(Key::ec(0)))); }
inline CRLItem crl(const std::vector<Bytes>& extensions) {
    return crl(CrlBuilder{.extensions = extensions});
}

} // namespace norvane
