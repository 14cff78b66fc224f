#include "EvidenceCollector.h"

#include "EvidenceArchive.h"
#include "EvidenceManifest.h"
#include "EvidenceSettings.h"
#include "Times.h"

#include "call/Limits.h"
#include "items/PrivateKeyUsage.h"
#include "store/StoreHandle.h"

#include <algorithm>
#include <charconv>
#include <new>

namespace norvane {
namespace {

ByteView view_of(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()),
            static_cast<std::uint32_t>(text.size())};
}

std::uint64_t number_of(std::string_view text) {
    std::uint64_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

/// The last error of a retrieval that failed; 0 if it did not.
std::uint32_t error_of(const RecordedEvent& outcome) {
    const std::string_view status = outcome.value("status");
    return static_cast<std::uint32_t>(status.empty() ? number_of(outcome.value("error"))
                                                     : HTTP_E_STATUS_FIRST + number_of(status));
}

} // namespace

bool EvidenceCollector::StoreContent::operator==(const StoreContent& other) const {
    // Stores of the platform share what they hold by its content, so a look at the places will do.
    const auto same = [](ByteView a, ByteView b) {
        return a.data == b.data && a.length == b.length;
    };
    return std::ranges::equal(certificates, other.certificates, same) &&
           std::ranges::equal(crls, other.crls, same);
}

EvidenceCollector::EvidenceCollector(const Options& options, const Stores& stores)
    : options_(options), stores_(stores), root_(open(NORVANE_W("Root"))),
      ca_(open(NORVANE_W("CA"))) {
    evidence_.program = std::string("revcheck ") + REVCHECK_VERSION;
    if (root_.store == nullptr || ca_.store == nullptr) {
        flaw_ = "a system store cannot be opened";
    }
}

EvidenceCollector::~EvidenceCollector() { NorvaneSetClock(nullptr, nullptr); }

EvidenceCollector::SystemStore EvidenceCollector::open(const WCHAR* name) {
    SystemStore opened{
        name,
        StoreHolder(CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, system_store_flags, name)),
        {}};
    if (opened.store != nullptr) {
        opened.content = content_of(opened.store.get());
    } else if (GetLastError() == ERROR_NOT_ENOUGH_MEMORY) {
        throw std::bad_alloc();
    }
    return opened;
}

EvidenceCollector::StoreContent EvidenceCollector::content_of(HCERTSTORE store) {
    StoreContent content;
    PCCERT_CONTEXT certificate = nullptr;
    while ((certificate = CertEnumCertificatesInStore(store, certificate)) != nullptr) {
        content.certificates.push_back({certificate->pbCertEncoded, certificate->cbCertEncoded});
    }
    PCCRL_CONTEXT crl = nullptr;
    while ((crl = CertFindCRLInStore(store, X509_ASN_ENCODING, 0, CRL_FIND_ANY, nullptr, crl)) !=
           nullptr) {
        content.crls.push_back({crl->pbCrlEncoded, crl->cbCrlEncoded});
    }
    return content;
}

ULONGLONG EvidenceCollector::hear_clock(DWORD clock, ULONGLONG reading, void* self) noexcept {
    auto& collector = *static_cast<EvidenceCollector*>(self);
    try {
        collector.note_reading(clock, reading);
    } catch (const std::bad_alloc&) {
        collector.flaw_ = "there was not enough memory for it";
    }
    return reading;
}

void EvidenceCollector::note_reading(DWORD clock, ULONGLONG reading) {
    if (!counts(clock, options_.accumulative)) {
        return;
    }
    std::optional<ULONGLONG>& first = first_readings_.at(clock);
    first = first.value_or(reading);
    evidence_.checks.back().readings.push_back(
        {.clock = clock, .milliseconds = static_cast<std::int64_t>(reading - *first)});
}

FILETIME EvidenceCollector::begin_check(std::span<const CheckedCertificate> certificates) {
    const std::string time = time_text(options_.time.value_or(now()));
    EvidenceCheck check;
    check.time = time;
    for (const CheckedCertificate& each : certificates) {
        const ByteView encoded{each.context->pbCertEncoded, each.context->cbCertEncoded};
        check.certificates.push_back(
            {as_json_tells(each.name), add_object(encoded, ObjectType::certificate)});
    }
    evidence_.checks.push_back(std::move(check));
    first_readings_ = {};
    NorvaneSetClock(&EvidenceCollector::hear_clock, this);
    return parse_time(time).value();
}

void EvidenceCollector::end_check(const DecisionRecord& record) {
    NorvaneSetClock(nullptr, nullptr);
    if (record.is_cut()) {
        flaw_ = "the record of a decision is too large to be kept whole";
    }
    for (const RecordedObject& object : record.objects()) {
        evidence_.checks.back().consulted.push_back(add_object(object));
    }
    for (std::size_t place = 0; place < record.nodes().size(); ++place) {
        const RecordedNode& node = record.nodes()[place];
        if (node.code == "retrieval") {
            add_retrieval(record, place);
        }
        all_crls_ = all_crls_ || (node.code == "quota_spent" &&
                                  node.value("quota") == name_of(Resource::shown_objects));
    }
}

void EvidenceCollector::add_retrieval(const DecisionRecord& record, std::size_t place) {
    const RecordedNode& node = record.nodes()[place];
    const RecordedEvent& outcome = node.outcome;
    EvidenceRetrieval retrieval;
    retrieval.url = as_json_tells(node.value("url"));
    retrieval.kind = node.value("for");
    retrieval.from = node.value("from");
    retrieval.outcome = outcome.code;
    retrieval.error = error_of(outcome);
    retrieval.cause = as_json_tells(outcome.value("cause"));
    retrieval.confirmed = outcome.code == "response_confirmed";
    retrieval.milliseconds = number_of(outcome.value("milliseconds"));
    retrieval.octets = number_of(outcome.value("octets"));
    retrieval.age_seconds = number_of(outcome.value("age_seconds"));
    const auto inside = record.nodes().subspan(place + 1, node.end - place - 1);
    retrieval.remembered =
        std::ranges::any_of(inside, [](const auto& each) { return each.code == "failed_lately"; });
    for (const RecordedEvent::Object& each : outcome.objects) {
        retrieval.objects.push_back(add_object(record.objects()[each.index]));
    }
    if (retrieval.error == 0 && retrieval.objects.empty()) {
        flaw_ = "a retrieval was broken off";
    }
    evidence_.checks.back().retrievals.push_back(std::move(retrieval));
}

void EvidenceCollector::add_verdict(const CheckedCertificate& certificate, const Verdict& verdict,
                                    const DecisionRecord* record) {
    Account account = account_of(verdict, record);
    members_[std::string(verdicts_name)] += report_as_json(certificate, verdict, account);
    account.whole = true;
    members_[std::string(records_name)] += report_as_json(certificate, verdict, account);
}

std::string EvidenceCollector::add_object(ByteView encoded, ObjectType type) {
    const std::string_view octets(reinterpret_cast<const char*>(encoded.data), encoded.length);
    std::string name = object_member_name(octets, type);
    members_.try_emplace(name, octets);
    if (type == ObjectType::crl) {
        crl_sizes_.insert(octets.size());
    }
    return name;
}

std::string EvidenceCollector::add_object(const RecordedObject& object) {
    return add_object(view_of(object.encoded),
                      object.is_crl ? ObjectType::crl : ObjectType::certificate);
}

ObjectNames EvidenceCollector::add_certificates(const StoreContent& content) {
    ObjectNames names;
    for (const ByteView encoded : content.certificates) {
        names.push_back(add_object(encoded, ObjectType::certificate));
    }
    return names;
}

/// A digest of each CRL that a store has could take longer than the decision.
void EvidenceCollector::add_consulted_crls(const StoreContent& content, ObjectNames& names) {
    for (const ByteView encoded : content.crls) {
        const std::string_view octets(reinterpret_cast<const char*>(encoded.data), encoded.length);
        if (all_crls_) {
            names.push_back(add_object(encoded, ObjectType::crl));
        } else if (crl_sizes_.contains(octets.size())) {
            std::string name = object_member_name(octets, ObjectType::crl);
            if (members_.contains(name)) {
                names.push_back(std::move(name));
            }
        }
    }
}

void EvidenceCollector::require_unchanged(const SystemStore& store) const {
    const SystemStore again = open(store.name);
    if (again.store == nullptr || !(again.content == store.content)) {
        throw EvidenceNotWritten("a system store has changed during the run");
    }
}

void EvidenceCollector::add_stores() {
    require_unchanged(root_);
    require_unchanged(ca_);
    EvidenceStores& told = evidence_.stores;
    told = {};
    told.root = add_certificates(root_.content);
    told.ca = add_certificates(ca_.content);
    add_consulted_crls(ca_.content, told.ca);
    for (const StoreHolder& store : stores_.certs) {
        told.certs.push_back(add_certificates(content_of(store.get())));
    }
    if (stores_.crls != nullptr) {
        add_consulted_crls(content_of(stores_.crls.get()), told.crls.emplace());
    }
    if (stores_.issuer != nullptr) {
        told.issuer = add_object({stores_.issuer->pbCertEncoded, stores_.issuer->cbCertEncoded},
                                 ObjectType::certificate);
    }
}

void EvidenceCollector::add_settings() {
    evidence_.options = {.time = std::nullopt,
                         .timeout_ms = options_.timeout_ms,
                         .cache_only = options_.cache_only,
                         .accumulative = options_.accumulative,
                         .strict_pkup = options_.strict_pkup,
                         .list = options_.grouping == Grouping::list};
    if (options_.time) {
        evidence_.options.time = time_text(*options_.time);
    }
    for (const EvidenceSetting& setting : evidence_settings) {
        const char* const value = NorvaneGetConfiguration(setting.section, setting.key);
        if (value == nullptr) {
            throw EvidenceNotWritten("the configuration cannot be read");
        }
        evidence_.settings[name_of(setting)] = as_json_tells(value);
    }
    const Quotas& quotas = configured_quotas();
    for (const Resource resource : all_resources) {
        evidence_.limits[std::string(name_of(resource))] = quotas[resource];
    }
    evidence_.strict_pkup = strict_pkup_is_on();
}

void EvidenceCollector::write(const std::string& path, std::span<const InputFault> faults) {
    if (!flaw_.empty()) {
        throw EvidenceNotWritten(flaw_);
    }
    for (const InputFault& fault : faults) {
        evidence_.faults.push_back(as_json_tells(fault.name) + ": " + as_json_tells(fault.reason));
    }
    add_stores();
    add_settings();
    members_.try_emplace(std::string(verdicts_name));
    members_.try_emplace(std::string(records_name));
    write_archive(path, with_manifest(std::move(evidence_), std::move(members_)));
}

} // namespace norvane
