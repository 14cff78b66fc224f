// Both conversions of public keys. The first octet of the input says which; then stands the blob,
// or the length of the key's text (2 octets, the most significant first), that text, and the one of
// the parameters. What converts must come back from the other side.

#include <norvane/revocation.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

namespace {

using Bytes = std::vector<BYTE>;

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

/// The content of a block that an export gave out, which is released.
Bytes take(BYTE* block, DWORD size) {
    const Bytes bytes(block, block + (block != nullptr ? size : 0));
    LocalFree(block);
    return bytes;
}

struct Texts {
    bool done;
    Bytes key, parameters;
};

Texts encode(const Bytes& blob) {
    BYTE *key = nullptr, *parameters = nullptr;
    DWORD key_length = 0, parameters_length = 0;
    const BOOL done = NorvaneXEREncodePublicKeyAndParameters(
        0, nullptr, blob.data(), static_cast<DWORD>(blob.size()), 0, nullptr, &key, &key_length,
        &parameters, &parameters_length);
    require(done != FALSE ? key != nullptr && key[key_length] == 0 : key == nullptr);
    return {done != FALSE, take(key, key_length), take(parameters, parameters_length)};
}

struct Blob {
    bool done;
    Bytes bytes;
};

Blob convert(Bytes key, Bytes parameters) {
    char oid[] = "1.2.643.2.2.20";
    CERT_PUBLIC_KEY_INFO info{{oid, {static_cast<DWORD>(parameters.size()), parameters.data()}},
                              {static_cast<DWORD>(key.size()), key.data(), 0}};
    BYTE* block = nullptr;
    DWORD size = 0, asked_size = 0;
    const BOOL done = NorvaneXERConvertPublicKeyInfo(0, &info, 0, 0, &block, &size);
    const BOOL asked = NorvaneXERConvertPublicKeyInfo(0, &info, 0, 0, nullptr, &asked_size);
    require(done == asked && size == asked_size && (block != nullptr) == (done != FALSE));
    return {done != FALSE, take(block, size)};
}

/// A length of the key in a blob, in bits, keeps 24 bits: greater ones only ask for memory.
void check_blob(Bytes blob) {
    constexpr std::size_t end_of_bit_length = 15;
    if (blob.size() > end_of_bit_length) {
        blob[end_of_bit_length] = 0;
    }
    const Texts texts = encode(blob);
    if (texts.done) {
        const Blob back = convert(texts.key, texts.parameters);
        const Texts again = encode(back.bytes);
        require(back.done && again.key == texts.key && again.parameters == texts.parameters);
    }
}

void check_texts(std::span<const std::uint8_t> input) {
    constexpr std::size_t length_size = 2;
    if (input.size() < length_size) {
        return;
    }
    const std::size_t length =
        std::min(input[0] * std::size_t{256} + input[1], input.size() - length_size);
    const auto key = input.subspan(length_size, length);
    const auto parameters = input.subspan(length_size + length);
    const Blob blob = convert({key.begin(), key.end()}, {parameters.begin(), parameters.end()});
    if (blob.done) {
        const Texts texts = encode(blob.bytes);
        require(texts.done && convert(texts.key, texts.parameters).bytes == blob.bytes);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size != 0) {
        if (data[0] % 2 == 0) {
            check_blob({data + 1, data + size});
        } else {
            check_texts({data + 1, size - 1});
        }
    }
    return 0;
}
