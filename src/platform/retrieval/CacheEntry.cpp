#include "platform/retrieval/CacheEntry.h"

#include <algorithm>
#include <concepts>
#include <limits>

namespace norvane {
namespace {

constexpr std::string_view entry_magic = "NRVNURL2";
/// What stands before the digest of the header.
constexpr std::size_t fixed_length =
    entry_magic.size() + 5 * sizeof(std::uint32_t) + 2 * sizeof(std::uint64_t) + sizeof(Digest);

template <std::unsigned_integral Number>
void put(std::string& out, Number number) {
    for (std::size_t i = 0; i < sizeof(Number); ++i) {
        out += static_cast<char>(number >> (8 * i) & 0xff);
    }
}

void put(std::string& out, const Digest& digest) { out.append(digest.begin(), digest.end()); }

std::uint32_t length_of(std::string_view text) { return static_cast<std::uint32_t>(text.size()); }

std::uint32_t number_of(ObjectKind kind) { return kind == ObjectKind::certificate ? 1 : 2; }

/// Takes fields off the front. What goes beyond the end is zero, and the input is bad from then on.
class Fields {
  public:
    explicit Fields(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

    [[nodiscard]] std::span<const std::uint8_t> bytes(std::uint64_t length) {
        if (length > rest_.size()) {
            good_ = false;
            rest_ = {};
        }
        const auto taken = rest_.first(good_ ? static_cast<std::size_t>(length) : 0);
        rest_ = rest_.subspan(taken.size());
        return taken;
    }
    template <std::unsigned_integral Number>
    [[nodiscard]] Number number() {
        Number value = 0;
        std::size_t shift = 0;
        for (const std::uint8_t octet : bytes(sizeof(Number))) {
            value |= static_cast<Number>(Number{octet} << shift);
            shift += 8;
        }
        return value;
    }
    [[nodiscard]] std::string text(std::uint32_t length) {
        const auto taken = bytes(length);
        return {taken.begin(), taken.end()};
    }
    [[nodiscard]] Digest digest() {
        Digest value{};
        std::ranges::copy(bytes(value.size()), value.begin());
        return value;
    }
    [[nodiscard]] bool good() const { return good_; }
    [[nodiscard]] bool at_end() const { return rest_.empty(); }

  private:
    std::span<const std::uint8_t> rest_;
    bool good_ = true;
};

bool read_parts(std::span<const std::uint8_t> content, std::vector<ByteView>& parts) {
    Fields in(content);
    while (in.good() && !in.at_end()) {
        const auto part = in.bytes(in.number<std::uint32_t>());
        parts.push_back({part.data(), static_cast<std::uint32_t>(part.size())});
    }
    return in.good();
}

} // namespace

std::string encoded_length(std::size_t length) {
    std::string out;
    put(out, static_cast<std::uint32_t>(length));
    return out;
}

Digest content_digest(std::span<const ByteView> parts) {
    Digester digester;
    for (const ByteView part : parts) {
        digester.add(encoded_length(part.length)).add({part.data, part.length});
    }
    return digester.finish();
}

std::string encode_cache_header(const CacheEntry& entry) {
    std::uint64_t content_length = 0;
    for (const ByteView part : entry.parts) {
        content_length += sizeof(std::uint32_t) + part.length;
    }
    std::string texts = entry.url;
    std::string fixed(entry_magic);
    put(fixed, number_of(entry.kind));
    put(fixed, length_of(entry.url));
    for (const std::string* text :
         {&entry.validators.etag, &entry.validators.last_modified, &entry.validators.source}) {
        put(fixed, length_of(*text));
        texts += *text;
    }
    put(fixed, static_cast<std::uint64_t>(entry.received));
    put(fixed, content_length);
    put(fixed, entry.content_digest);
    put(fixed, Digester().add(fixed).add(texts).finish());
    return fixed + texts;
}

std::optional<CacheEntry> decode_cache_entry(std::span<const std::uint8_t> file) {
    Fields in(file);
    if (!std::ranges::equal(in.bytes(entry_magic.size()), entry_magic)) {
        return std::nullopt;
    }
    CacheEntry entry;
    const auto kind = in.number<std::uint32_t>();
    entry.kind = kind == 1 ? ObjectKind::certificate : ObjectKind::crl;
    const auto url_length = in.number<std::uint32_t>();
    const auto etag_length = in.number<std::uint32_t>();
    const auto last_modified_length = in.number<std::uint32_t>();
    const auto source_length = in.number<std::uint32_t>();
    entry.received = static_cast<std::int64_t>(in.number<std::uint64_t>());
    const auto content_length = in.number<std::uint64_t>();
    entry.content_digest = in.digest();
    const Digest header_digest = in.digest();

    const std::uint64_t variable_length =
        std::uint64_t{url_length} + etag_length + last_modified_length + source_length;
    const auto variable = in.bytes(variable_length);
    const auto content = in.bytes(content_length);
    if (!in.good() || !in.at_end() || kind != number_of(entry.kind) ||
        Digester().add(file.first(fixed_length)).add(variable).finish() != header_digest ||
        Digester().add(content).finish() != entry.content_digest) {
        return std::nullopt;
    }
    Fields texts(variable);
    entry.url = texts.text(url_length);
    entry.validators = {.etag = texts.text(etag_length),
                        .last_modified = texts.text(last_modified_length),
                        .source = texts.text(source_length)};
    return read_parts(content, entry.parts) ? std::optional(std::move(entry)) : std::nullopt;
}

std::string retrieval_key(ObjectKind kind, std::string_view url) {
    return std::string(kind == ObjectKind::certificate ? "certificate " : "crl ").append(url);
}

std::string cache_file_name(ObjectKind kind, std::string_view url) {
    return to_hex(Digester().add(retrieval_key(kind, url)).finish()).append(cache_file_ending);
}

} // namespace norvane
