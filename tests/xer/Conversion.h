// The two exports with values in the place of pointers, and material for them.
#pragma once

#include "platform/FailingNew.h"
#include "support/Der.h"

#include <norvane/revocation.h>

#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace norvane::testing {

inline constexpr const char* key_oid = "1.2.643.2.2.20";
/// The last error before every call, which no step sets.
inline constexpr DWORD untouched = 0x12345678;

inline const std::string opening = "<GostR3410_94_PublicKeyOctetString>";
inline const std::string closing = "</GostR3410_94_PublicKeyOctetString>";
inline const std::string key_text = opening + "QUJD\n" + closing;
inline const std::string parameters_text =
    "<GostR3410-94-PublicKeyParameters><publicKeyParamSet>1.2.643.2.2.32.2</publicKeyParamSet>"
    "<digestParamSet>1.2.643.2.2.30.1</digestParamSet></GostR3410-94-PublicKeyParameters>";
inline const Bytes parameters = hex("30 12 06072a850302022002 06072a850302021e01");

/// A blob with "ABC" as its key, unless told otherwise. `key_bits` is the length that it tells.
inline Bytes key_blob(const Bytes& encoded_parameters, const Bytes& key = text_bytes("ABC"),
                      std::optional<std::size_t> key_bits = {}) {
    const std::size_t bits = key_bits.value_or(key.size() * 8);
    Bytes blob = hex("06200100 01310000 4d414731");
    for (unsigned shift = 0; shift != 32; shift += 8) {
        blob.push_back(static_cast<std::uint8_t>(bits >> shift));
    }
    return cat(blob, encoded_parameters, key);
}

struct Texts {
    bool done = false;
    DWORD error = 0;
    std::optional<std::string> key, parameters;
    DWORD key_length = untouched, parameters_length = untouched;
};

inline std::optional<std::string> take(BYTE* text, DWORD length) {
    std::optional<std::string> taken;
    if (text != nullptr) {
        taken.emplace(reinterpret_cast<const char*>(text), length);
        LocalFree(text);
    }
    return taken;
}

/// With as many allocations as `allowed`, or any number below 0.
inline Texts encode(const Bytes& blob, long allowed = -1) {
    const Bytes exact(blob); // Its end is the end of a block.
    BYTE never{};
    BYTE *key_block = &never, *parameters_block = &never;
    Texts texts;
    SetLastError(untouched);
    set_allocations_left(allowed);
    texts.done =
        NorvaneXEREncodePublicKeyAndParameters(
            77, nullptr, exact.data(), static_cast<DWORD>(exact.size()), 77, nullptr, &key_block,
            &texts.key_length, &parameters_block, &texts.parameters_length) != FALSE;
    set_allocations_left(-1);
    texts.error = GetLastError();
    EXPECT_EQ(key_block != nullptr, texts.done);
    texts.key = take(key_block, texts.key_length);
    texts.parameters = take(parameters_block, texts.parameters_length);
    return texts;
}

struct Blob {
    bool done = false;
    DWORD error = 0;
    Bytes bytes;
    DWORD size = untouched;
};

inline Blob convert(const std::string& of_key, const std::string& of_parameters,
                    std::string oid = key_oid, long allowed = -1) {
    Bytes key_bytes = text_bytes(of_key), parameters_bytes = text_bytes(of_parameters);
    CERT_PUBLIC_KEY_INFO info{
        {oid.data(), {static_cast<DWORD>(parameters_bytes.size()), parameters_bytes.data()}},
        {static_cast<DWORD>(key_bytes.size()), key_bytes.data(), 5}};
    BYTE* bytes = nullptr;
    Blob blob;
    SetLastError(untouched);
    set_allocations_left(allowed);
    blob.done = NorvaneXERConvertPublicKeyInfo(77, &info, CALG_NORVANE_GOST_R3410_2001, 77, &bytes,
                                               &blob.size) != FALSE;
    set_allocations_left(-1);
    blob.error = GetLastError();
    EXPECT_EQ(bytes != nullptr, blob.done);
    if (bytes != nullptr) {
        blob.bytes.assign(bytes, bytes + blob.size);
        LocalFree(bytes);
    }
    return blob;
}

} // namespace norvane::testing
