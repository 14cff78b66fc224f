#pragma once

#include "asn1/ByteView.h"
#include "items/CRLItem.h"
#include "items/CacheInfo.h"
#include "items/CertificateItem.h"

#include <cstring>
#include <map>
#include <type_traits>
#include <utility>

namespace norvane {

/// Orders items, and encodings that are looked for among them, by encoded length and then by
/// bytes. Nothing is decoded.
struct ItemOrder {
    using is_transparent = void;

    template <class A, class B>
    [[nodiscard]] bool operator()(const A& a, const B& b) const {
        const ByteView left = encoding(a);
        const ByteView right = encoding(b);
        return left.length != right.length
                   ? left.length < right.length
                   : left.length != 0 && std::memcmp(left.data, right.data, left.length) < 0;
    }

  private:
    static ByteView encoding(ByteView bytes) { return bytes; }
    template <class Item>
    static ByteView encoding(const Item& item) {
        return {item.encoded().data, item.encoded().length};
    }
};

/// item_less of two items: the order of the caches.
template <class Item>
[[nodiscard]] bool item_less(const Item& a, const Item& b) {
    return ItemOrder()(a, b);
}

/// The maps that own all items of a run, each distinct certificate and CRL once. Nothing is erased
/// from them before they die, and no item moves in them, so plain pointers to items are good for
/// the whole run and two of them are equal exactly if the bytes are.
using ItemCache = std::map<CertificateItem, CertificateCacheInfo, ItemOrder>;
using CrlItemCache = std::map<CRLItem, CRLCacheInfo, ItemOrder>;

/// Enters the certificate, and gives its place in the map: a new one, with a copy of `item` and of
/// `info`, or the one that is there already. That one keeps all that it has learnt, but becomes
/// trusted if `info` is. The bytes are looked up before anything is copied; an item that is given
/// as an rvalue is moved into its place, and left alone if it is known.
///
/// Throws what encoded() throws, and std::bad_alloc, with the map as it was.
template <class Item>
requires std::is_same_v<std::remove_cvref_t<Item>, CertificateItem> ItemCache::value_type&
cache_certificate(ItemCache& map, Item&& item, const CertificateCacheInfo& info);

/// The same for a CRL, whose info always stays as it is.
template <class Item>
requires std::is_same_v<std::remove_cvref_t<Item>, CRLItem> CrlItemCache::value_type&
cache_crl(CrlItemCache& map, Item&& item, const CRLCacheInfo& info);

/// The same for an encoding that is no item yet: its bytes are copied once if it is new, and not
/// at all if it is known.
ItemCache::value_type& cache_certificate(ItemCache& map, ByteView encoded,
                                         const CertificateCacheInfo& info);
CrlItemCache::value_type& cache_crl(CrlItemCache& map, ByteView encoded, const CRLCacheInfo& info);

/// A reference to an item and its info in a cache, which must outlive it.
template <class Item, class Info>
class KeyPairPtr {
  public:
    using Pair = std::pair<const Item, Info>;

    explicit KeyPairPtr(Pair& pair) : pair_(&pair) {}
    KeyPairPtr(const KeyPairPtr&) = default;
    KeyPairPtr& operator=(const KeyPairPtr&) = default;
    virtual ~KeyPairPtr() = default;

    [[nodiscard]] const Item& item() const { return pair_->first; }
    [[nodiscard]] Info& info() const { return pair_->second; }

  private:
    Pair* pair_;
};

namespace detail {

/// The place of `encoded`, made with `make_item()` if it is new.
template <class Map, class Info, class MakeItem>
typename Map::value_type& enter(Map& map, ByteView encoded, const Info& info, MakeItem make_item) {
    const auto place = map.lower_bound(encoded);
    if (place != map.end() && !map.key_comp()(encoded, place->first)) {
        return *place;
    }
    typename Map::key_type item = make_item();
    item.set_discovery(static_cast<std::uint32_t>(map.size()) + 1);
    return *map.emplace_hint(place, std::move(item), info);
}

inline ItemCache::value_type& merge_trust(ItemCache::value_type& pair,
                                          const CertificateCacheInfo& info) {
    pair.second.trusted = pair.second.trusted || info.trusted;
    return pair;
}

template <class Item>
ByteView encoding_of(const Item& item) {
    return {item.encoded().data, item.encoded().length};
}

} // namespace detail

template <class Item>
requires std::is_same_v<std::remove_cvref_t<Item>, CertificateItem> ItemCache::value_type&
cache_certificate(ItemCache& map, Item&& item, const CertificateCacheInfo& info) {
    const auto make_item = [&] { return CertificateItem(std::forward<Item>(item)); };
    return detail::merge_trust(detail::enter(map, detail::encoding_of(item), info, make_item),
                               info);
}

template <class Item>
requires std::is_same_v<std::remove_cvref_t<Item>, CRLItem> CrlItemCache::value_type&
cache_crl(CrlItemCache& map, Item&& item, const CRLCacheInfo& info) {
    return detail::enter(map, detail::encoding_of(item), info,
                         [&] { return CRLItem(std::forward<Item>(item)); });
}

} // namespace norvane
