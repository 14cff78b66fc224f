// Reads the accessors of certificates and CRLs in any order, with copies, moves and caches in
// between, and holds every read against the rule of its accessor: what it gives at first, what
// after a failure, what a copy keeps.
//
// Input: an octet whose lowest bit is 1 for CRLs, two encodings with their lengths before them in
// two octets, lowest first, and then one octet for each step.

#include "items/ChainBase.h"
#include "values/Exceptions.h"
#include "values/ObjectIdentifierText.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace norvane {
namespace {

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

/// Takes the input apart; past its end everything is zero or empty.
class Input {
  public:
    explicit Input(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

    [[nodiscard]] bool at_end() const { return rest_.empty(); }
    std::uint8_t octet() {
        const auto taken = take(1);
        return taken.empty() ? std::uint8_t{0} : taken.front();
    }
    ByteView encoding() {
        const std::size_t low = octet();
        const auto taken = take(low + octet() * std::size_t{256});
        return {taken.data(), static_cast<std::uint32_t>(taken.size())};
    }

  private:
    std::span<const std::uint8_t> take(std::size_t count) {
        const auto taken = rest_.first(std::min(count, rest_.size()));
        rest_ = rest_.subspan(taken.size());
        return taken;
    }

    std::span<const std::uint8_t> rest_;
};

// ---- What one read comes to ----

struct Outcome {
    bool threw = false;
    std::string text;            ///< The exception's, or of the value.
    const void* place = nullptr; ///< Where the value lies, if moving the item leaves it there.

    [[nodiscard]] bool same(const Outcome& other) const {
        return threw == other.threw && text == other.text;
    }
};

Outcome outcome_of(const CACMPT_BLOB& blob) {
    return {false, std::string(blob.data, blob.data + blob.length), blob.data};
}
Outcome outcome_of(const std::string& text) { return {false, text}; }
Outcome outcome_of(std::int64_t number) { return {false, std::to_string(number)}; }
Outcome outcome_of(std::optional<std::uint32_t> number) {
    return number ? outcome_of(std::int64_t{*number}) : Outcome{false, "null"};
}
Outcome outcome_of(const CACMPT_CERT_NAME& name) {
    const CACMPT_BLOB& canonical = name.canonical();
    require(canonical_name(canonical) == canonical);
    require(names_equal(name, CACMPT_CERT_NAME(name.encoded)));
    return outcome_of(name.encoded);
}
Outcome outcome_of(const DistributionPointList* points) {
    if (points == nullptr) {
        return {false, "null"};
    }
    Outcome outcome{false, std::to_string(points->size()), points->data()};
    for (const DistributionPointItem& point : *points) {
        outcome.text += outcome_of(point.distribution_point.value_or(CACMPT_BLOB())).text;
        outcome.text += std::to_string(point.reasons ? *point.reasons : -1);
    }
    return outcome;
}
template <class Value>
Outcome outcome_of(const Value* value) {
    return {false, value == nullptr ? "null" : "set", value};
}

template <class Read>
Outcome attempt(Read read) {
    try {
        return read();
    } catch (const CAException& failure) {
        return {true, failure.what()};
    }
}

// ---- The accessors and their rules ----

enum class Rule {
    on_exit,     ///< Throws again after a throw.
    on_entry,    ///< Absent once the item did not decode.
    of_aki,      ///< Filled from the authority key identifier.
    of_idp,      ///< Made of the issuing distribution point at each call.
    each_copies, ///< On exit, and copies keep it.
};

template <class Item>
struct Accessor {
    Rule rule;
    std::string absent;
    Outcome (*read)(const Item&);
};

template <class Item, auto accessor>
Outcome read(const Item& item) {
    return outcome_of(std::invoke(accessor, item));
}

using Cert = CertificateItem;
using Crl = CRLItem;

// Where the accessors stand that others are made of.
constexpr std::size_t aki = 0;
constexpr std::size_t idp = 1;

const std::vector<Accessor<Cert>>& accessors(const Cert&) {
    static const std::vector<Accessor<Cert>> table{
        {Rule::on_entry, "null", read<Cert, &Cert::authority_key_identifier>},
        {Rule::each_copies, "", read<Cert, &Cert::issuer_name>},
        {Rule::each_copies, "", read<Cert, &Cert::subject_name>},
        {Rule::each_copies, "", read<Cert, &Cert::subject_key_identifier>},
        {Rule::each_copies, "", read<Cert, &Cert::is_self_signed>},
        {Rule::on_entry, "null", read<Cert, &Cert::crl_distribution_points>},
        {Rule::on_entry, "null", read<Cert, &Cert::freshest_crl>},
        {Rule::on_exit, "null", read<Cert, &Cert::authority_info_access>},
        {Rule::on_exit, "null", read<Cert, &Cert::basic_constraints>},
        {Rule::on_exit, "0", read<Cert, &Cert::basic_constraints_critical>},
        {Rule::on_exit, "null", read<Cert, &Cert::key_usage>},
        {Rule::on_exit, "null", read<Cert, &Cert::ext_key_usage>},
        {Rule::of_aki, "", read<Cert, &Cert::authority_key_id>},
        {Rule::of_aki, "", read<Cert, &Cert::authority_cert_serial>},
    };
    return table;
}

const std::vector<Accessor<Crl>>& accessors(const Crl&) {
    static const std::vector<Accessor<Crl>> table{
        {Rule::on_entry, "null", read<Crl, &Crl::authority_key_identifier>},
        {Rule::on_entry, "null", read<Crl, &Crl::issuing_distribution_point>},
        {Rule::each_copies, "", read<Crl, &Crl::issuer_name>},
        {Rule::on_entry, "null", read<Crl, &Crl::freshest_crl>},
        {Rule::on_exit, "null", read<Crl, &Crl::ca_version>},
        {Rule::on_entry, "null", read<Crl, &Crl::crl_number>},
        {Rule::on_entry, "null", read<Crl, &Crl::delta_crl_indicator>},
        {Rule::on_entry, "-1", read<Crl, &Crl::crl_kind>},
        {Rule::of_aki, "", read<Crl, &Crl::authority_key_id>},
        {Rule::of_aki, "", read<Crl, &Crl::authority_cert_serial>},
        {Rule::of_idp, "127", read<Crl, &Crl::idp_only_some_reasons>},
        {Rule::of_idp, "", read<Crl, &Crl::idp_distribution_point_name>},
    };
    return table;
}

/// What each accessor gives on an item of its own over one encoding, or over none.
template <class Item>
struct Truth {
    explicit Truth(std::optional<ByteView> bytes) : encoding(bytes) {
        for (const auto& accessor : accessors(Item())) {
            const bool from_other = accessor.rule == Rule::of_aki || accessor.rule == Rule::of_idp;
            const Item item = make();
            first.push_back(attempt([&] { return accessor.read(item); }));
            later.push_back(from_other ? attempt([&] { return accessor.read(item); }) : Outcome());
        }
    }

    [[nodiscard]] Item make() const {
        return encoding ? Item(CACMPT_BLOB(encoding->data, encoding->length)) : Item();
    }

    std::optional<ByteView> encoding;
    std::vector<Outcome> first;
    std::vector<Outcome> later; ///< The second read of what is made of other values.
};

/// What an accessor that sets its memo on entry gives after its first read.
Outcome second_read(const Outcome& first, const std::string& absent) {
    const auto says = [&](const char* words) {
        return first.text.find(words) != std::string::npos;
    };
    if (!first.threw || says("is malformed") || says("No source for fill_encoded")) {
        return first;
    }
    return {false, says("idp extension is not critical") ? "set" : absent};
}

// ---- An item, and what is known about it ----

template <class Item>
class Subject {
  public:
    explicit Subject(const Truth<Item>& truth)
        : item_(truth.make()), truth_(&truth), states_(truth.first.size()) {}

    [[nodiscard]] const Item& item() const { return item_; }
    [[nodiscard]] const Truth<Item>& truth() const { return *truth_; }
    [[nodiscard]] std::size_t accessor_count() const { return states_.size(); }

    void read(std::size_t index) {
        State& state = states_[index];
        const bool in_copy = state.kept && !item_.is_decoded();
        const Outcome wanted = expected(index);
        const Outcome found = attempt([&] { return accessors(item_)[index].read(item_); });
        require(found.same(wanted));
        require(!in_copy || !item_.is_decoded());
        if (accessors(item_)[index].rule == Rule::each_copies && !found.threw) {
            state.kept = found;
        }
        const bool made_anew = accessors(item_)[index].rule == Rule::of_idp;
        require(made_anew || state.place == nullptr || state.place == found.place);
        state.place = found.place;
        check_raw_values();
    }

    void assign(const Subject& other) {
        item_ = other.item_;
        if (this != &other) {
            forget(other);
        }
    }
    void make_copy_of(const Subject& other) {
        Item copy(other.item_);
        item_ = std::move(copy);
        forget(other);
    }
    void move_there_and_back() {
        Item elsewhere(std::move(item_));
        item_ = std::move(elsewhere);
    }
    void clear(const Truth<Item>& nothing) {
        item_.clear();
        truth_ = &nothing;
        states_.assign(states_.size(), {});
    }

  private:
    struct State {
        bool read = false;
        std::optional<Outcome> kept;
        const void* place = nullptr;
    };

    /// What a read gives now, and what it leaves behind in the states.
    Outcome expected(std::size_t index) {
        const auto& [rule, absent, unused] = accessors(item_)[index];
        State& state = states_[index];
        const Outcome& first = truth_->first[index];
        switch (rule) {
        case Rule::on_entry:
            return std::exchange(state.read, true) ? second_read(first, absent) : first;
        case Rule::of_aki:
        case Rule::of_idp: {
            if (state.kept) {
                return *state.kept;
            }
            const Outcome base = expected(rule == Rule::of_aki ? aki : idp);
            if (base.threw) {
                return base;
            }
            const Outcome made =
                base.text == "null" ? Outcome{false, absent} : truth_->later[index];
            if (rule == Rule::of_aki) {
                state.kept = made;
            }
            return made;
        }
        default:
            return first;
        }
    }

    void forget(const Subject& source) {
        truth_ = source.truth_;
        states_ = source.states_;
        for (State& state : states_) {
            state.read = false;
            state.place = nullptr;
        }
    }

    /// Of extensions that were read before, so that this reads nothing for the first time.
    void check_raw_values() const {
        if constexpr (std::is_same_v<Item, Crl>) {
            const auto has_none = [](const Outcome& raw) { return raw.threw || raw.text.empty(); };
            const Outcome& first_idp = truth_->first[idp];
            const bool no_idp = !first_idp.threw && first_idp.text == "null";
            require(!states_[idp].read || !no_idp ||
                    has_none(attempt([this] { return outcome_of(item_.idp_raw()); })));
            require(!states_[aki].read || !truth_->first[aki].threw ||
                    has_none(attempt([this] { return outcome_of(item_.aki_raw()); })));
        }
    }

    Item item_;
    const Truth<Item>* truth_;
    std::vector<State> states_;
};

// ---- Decisions over what the accessors give ----

/// The first entry whose serial number has the text decides.
void check_decision(const Crl& crl, Input& input) {
    static_cast<void>(crl.encoded());
    const ASN1T_RevokedCertificates& entries = crl.decoded()->tbsCertList.revokedCertificates;
    std::string serial;
    for (unsigned place = input.octet(); const ASN1T_RevokedCertificate& entry : entries) {
        serial = place-- == 0 ? entry.userCertificate.text() : serial;
    }
    for (const ASN1T_RevokedCertificate& entry : entries) {
        if (entry.userCertificate.text() == serial) {
            require(crl.find_entry_reason(serial) == entry_reason(entry));
            return;
        }
    }
    require(crl.find_entry_reason(serial) == entry_not_found);
}

/// Some of the certificate's own purposes are all there, and any of them is if there are some.
void check_decision(const Cert& certificate, Input& input) {
    const ASN1T_ExtKeyUsageSyntax* const usages = certificate.ext_key_usage();
    const unsigned mask = input.octet();
    std::vector<std::array<char, 64>> texts;
    std::vector<char*> requested;
    texts.reserve(8);
    if (usages != nullptr) {
        for (unsigned rest = mask; const ASN1TObjId& usage : usages->elements) {
            if (rest % 2 != 0) {
                oid_to_text(texts.emplace_back().data(), usage, 64, "");
                requested.push_back(texts.back().data());
            }
            rest /= 2;
        }
    }
    CERT_USAGE_MATCH match{};
    match.Usage = {static_cast<DWORD>(requested.size()), requested.data()};
    match.dwType = USAGE_MATCH_TYPE_AND;
    require(certificate.has_ext_key_usages(match) == (usages != nullptr));
    match.dwType = USAGE_MATCH_TYPE_OR;
    require(certificate.has_ext_key_usages(match) == !requested.empty());
}

// ---- The cache ----

ItemCache::value_type& enter(ItemCache& map, auto&& item) {
    return cache_certificate(map, std::forward<decltype(item)>(item), {});
}
CrlItemCache::value_type& enter(CrlItemCache& map, auto&& item) {
    return cache_crl(map, std::forward<decltype(item)>(item), {});
}

/// Two CRLs are in at most one order, and one is in none with itself.
void check_order(const Crl& a, const Crl& b) {
    static_cast<void>(attempt([&] {
        require(!crl_time_less(&a, &b) || !crl_time_less(&b, &a));
        require(!crl_time_less(&a, &a));
        return Outcome();
    }));
}
void check_order(const Cert&, const Cert&) {}

template <class Map>
void check_cache(Map& map, const Subject<typename Map::key_type>& subject, unsigned way) {
    using Item = typename Map::key_type;
    const auto& encoding = subject.truth().encoding;
    const std::size_t size = map.size();
    if (!encoding) {
        require(attempt([&] { return outcome_of(&enter(map, subject.item())); }).threw);
        require(map.size() == size);
        return;
    }
    const auto known = map.find(*encoding);
    const bool was_known = known != map.end();
    const bool was_decoded = was_known && known->first.is_decoded();
    Item copy(subject.item());
    auto& pair = way % 3 == 0   ? enter(map, *encoding)
                 : way % 3 == 1 ? enter(map, subject.item())
                                : enter(map, std::move(copy));
    require(!was_known || (&pair == &*known && copy.encoded().length == encoding->length));
    require(map.size() == size + (was_known ? 0 : 1));
    require(was_known || pair.first.discovery() == map.size());
    require(pair.first.is_decoded() == was_decoded);
    require(pair.first.encoded() == CACMPT_BLOB(encoding->data, encoding->length));
    std::set<const Item*, DiscoveryOrder> in_order;
    for (const auto& [item, info] : map) {
        in_order.insert(&item);
        check_order(item, pair.first);
    }
    require(in_order.size() == map.size() && (*in_order.begin())->discovery() == 1);
}

// ---- The steps ----

template <class Item, class Map>
void run(Input& input) {
    const ByteView one = input.encoding();
    const ByteView other = input.encoding();
    static const Truth<Item> nothing(std::nullopt);
    const Truth<Item> truths[]{Truth<Item>(one), Truth<Item>(other)};
    Subject<Item> subjects[]{Subject<Item>(truths[0]), Subject<Item>(truths[1])};
    Map map;
    while (!input.at_end()) {
        constexpr unsigned other_steps = 8;
        const unsigned step = input.octet();
        Subject<Item>& subject = subjects[step >> 7];
        Subject<Item>& second = subjects[1 - (step >> 7)];
        const std::size_t choice = (step & 0x7f) % (subject.accessor_count() + other_steps);
        switch (choice) {
        case 0:
            second.assign(subject);
            break;
        case 1:
            second.make_copy_of(subject);
            break;
        case 2:
            subject.assign(subject);
            break;
        case 3:
            subject.move_there_and_back();
            break;
        case 4:
            subject.clear(nothing);
            break;
        case 5:
            subject = Subject<Item>(truths[input.octet() % 2]);
            break;
        case 6:
            check_cache(map, subject, input.octet());
            break;
        case 7:
            // Items that do not decode and purposes too long to compare end it with an exception.
            static_cast<void>(attempt([&] {
                check_decision(subject.truth().make(), input);
                return Outcome();
            }));
            break;
        default:
            subject.read(choice - other_steps);
            break;
        }
    }
    for (Subject<Item>& subject : subjects) {
        for (std::size_t index = 0; index < 2 * subject.accessor_count(); ++index) {
            subject.read(index / 2);
        }
    }
}

} // namespace
} // namespace norvane

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    norvane::Input input({data, size});
    if (input.octet() % 2 == 0) {
        norvane::run<norvane::CertificateItem, norvane::ItemCache>(input);
    } else {
        norvane::run<norvane::CRLItem, norvane::CrlItemCache>(input);
    }
    return 0;
}
