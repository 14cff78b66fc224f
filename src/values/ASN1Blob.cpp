#include "values/ASN1Blob.h"

#include <cstring>
#include <new>
#include <utility>

#include "asn1/LargePages.h"
#include "values/ProcessFailure.h"

namespace norvane {
namespace {

std::uint8_t* allocate(std::uint32_t count) {
    auto* const bytes = new (std::nothrow) std::uint8_t[count];
    if (bytes == nullptr) {
        throw OutOfMemory(source_module::asn1_blob, __LINE__);
    }
    prefer_large_pages(bytes, count);
    return bytes;
}

// Of two byte strings of one length; those without bytes have null pointers, which memcmp must
// not see.
int compare_bytes(const CACMPT_BLOB& a, const CACMPT_BLOB& b) noexcept {
    return a.length == 0 ? 0 : std::memcmp(a.data, b.data, a.length);
}

} // namespace

CACMPT_BLOB::CACMPT_BLOB(const std::uint8_t* bytes, std::uint32_t count) { assign(bytes, count); }

CACMPT_BLOB::CACMPT_BLOB(const CACMPT_BLOB& other) : CACMPT_BLOB(other.data, other.length) {}

CACMPT_BLOB::CACMPT_BLOB(CACMPT_BLOB&& other) noexcept
    : length(std::exchange(other.length, 0)), data(std::exchange(other.data, nullptr)) {}

CACMPT_BLOB& CACMPT_BLOB::operator=(const CACMPT_BLOB& other) {
    if (this != &other) {
        assign(other.data, other.length);
    }
    return *this;
}

CACMPT_BLOB& CACMPT_BLOB::operator=(CACMPT_BLOB&& other) noexcept {
    if (this != &other) {
        delete[] data;
        length = std::exchange(other.length, 0);
        data = std::exchange(other.data, nullptr);
    }
    return *this;
}

CACMPT_BLOB::~CACMPT_BLOB() { delete[] data; }

void CACMPT_BLOB::assign(const std::uint8_t* bytes, std::uint32_t count) {
    delete[] data;
    data = nullptr;
    length = 0;
    if (count != 0) {
        data = allocate(count);
        length = count;
        std::memcpy(data, bytes, count);
    }
}

void CACMPT_BLOB::resize(std::uint32_t count) {
    if (count > length) {
        std::uint8_t* const grown = allocate(count);
        if (length != 0) {
            std::memcpy(grown, data, length);
        }
        delete[] data;
        data = grown;
    }
    length = count;
}

bool blob_less(const CACMPT_BLOB& a, const CACMPT_BLOB& b) noexcept {
    return a.length != b.length ? a.length < b.length : compare_bytes(a, b) < 0;
}

bool operator==(const CACMPT_BLOB& a, const CACMPT_BLOB& b) noexcept {
    return a.length == b.length && compare_bytes(a, b) == 0;
}

} // namespace norvane
