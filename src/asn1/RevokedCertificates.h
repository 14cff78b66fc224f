#pragma once

#include "asn1/ByteView.h"
#include "asn1/CommonTypes.h"
#include "asn1/Extension.h"
#include "asn1/Integer.h"
#include "asn1/Reader.h"

#include <cstdint>

namespace norvane {

/// A string inside a revoked entry that came in segments (X.690 8.7.3), put together in the memory
/// of the context. They form a list in the order of their places.
struct JoinedString {
    const std::uint8_t* place = nullptr; ///< Where the element of the string begins.
    ByteView octets;
    const JoinedString* next = nullptr;
};

/// The extensions of one revoked entry, read from the bytes as somebody walks over them. Of their
/// values only the reason code (2.5.29.21) is decoded.
class ASN1T_EntryExtensions {
  public:
    class iterator {
      public:
        iterator(const std::uint8_t* place, const JoinedString* joined)
            : place_(place), joined_(joined) {}
        [[nodiscard]] ASN1T_Extension operator*() const;
        iterator& operator++();
        [[nodiscard]] bool operator==(const iterator& other) const {
            return place_ == other.place_;
        }

      private:
        const std::uint8_t* place_;
        const JoinedString* joined_;
    };

    ASN1T_EntryExtensions() = default;
    ASN1T_EntryExtensions(ByteView content, const JoinedString* joined)
        : content_(content), joined_(joined) {}

    [[nodiscard]] iterator begin() const { return {content_.begin(), joined_}; }
    [[nodiscard]] iterator end() const { return {content_.end(), nullptr}; }

  private:
    ByteView content_;
    const JoinedString* joined_ = nullptr;
};

/// An element of revokedCertificates (RFC 5280 5.1.2.6).
struct ASN1T_RevokedCertificate {
    struct {
        std::uint32_t crlEntryExtensionsPresent : 1;
    } m{};
    ASN1TInteger userCertificate;
    ASN1T_Time revocationDate;
    ASN1T_EntryExtensions crlEntryExtensions;
};

/// The revoked entries of a CRL as a range that walks the bytes: decoding proves every entry well
/// formed and counts them, and builds none. An entry made by the walk views the same bytes.
class ASN1T_RevokedCertificates {
  public:
    class iterator {
      public:
        iterator(const std::uint8_t* place, const std::uint8_t* end, const JoinedString* joined)
            : next_(place), end_(end), joined_(joined) {
            ++*this;
        }
        [[nodiscard]] const ASN1T_RevokedCertificate& operator*() const { return entry_; }
        [[nodiscard]] const ASN1T_RevokedCertificate* operator->() const { return &entry_; }
        iterator& operator++();
        [[nodiscard]] bool operator==(const iterator& other) const {
            return place_ == other.place_;
        }

      private:
        const std::uint8_t* place_ = nullptr; ///< Of the entry; the end of the list behind it.
        const std::uint8_t* next_;
        const std::uint8_t* end_;
        const JoinedString* joined_;
        ASN1T_RevokedCertificate entry_;
    };

    std::uint32_t count = 0;

    [[nodiscard]] iterator begin() const { return {content_.begin(), content_.end(), joined_}; }
    [[nodiscard]] iterator end() const { return {content_.end(), content_.end(), nullptr}; }

    /// The first entry whose serial number `is_sought` takes, given its content octets; or end().
    /// Looks at serial numbers alone and builds no other entry.
    template <class Predicate>
    [[nodiscard]] iterator find(Predicate is_sought) const {
        const std::uint8_t* place = content_.begin();
        while (place != content_.end()) {
            const Extent entry = extent_at(place);
            if (is_sought(entry.serial)) {
                return {place, content_.end(), joined_};
            }
            place = entry.end;
        }
        return end();
    }

    friend void decode(Reader& in, ASN1T_RevokedCertificates& out);

  private:
    struct Extent {
        ByteView serial;
        const std::uint8_t* end = nullptr;
    };
    [[nodiscard]] static Extent extent_at(const std::uint8_t* place);

    ByteView content_;
    const JoinedString* joined_ = nullptr;
};

} // namespace norvane
