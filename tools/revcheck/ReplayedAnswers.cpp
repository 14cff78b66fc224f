#include "ReplayedAnswers.h"

#include "EvidenceManifest.h"
#include "EvidenceSettings.h"

#include <algorithm>
#include <new>

namespace norvane {
namespace {

std::string name_of(const EvidenceRetrieval& retrieval) {
    return retrieval.url + " (" + retrieval.kind + ", " + retrieval.from + ")";
}

} // namespace

ReplayedAnswers::ReplayedAnswers(const EvidenceCheck& check, const Members& members,
                                 bool accumulative, ULONGLONG moment,
                                 const DifferenceSink& differences)
    : check_(check), members_(members), accumulative_(accumulative), moment_(moment),
      differences_(differences), given_(check.retrievals.size()) {
    NorvaneSetRetrievalSource(&ReplayedAnswers::retrieve, this);
    NorvaneSetClock(&ReplayedAnswers::read_clock, this);
}

ReplayedAnswers::~ReplayedAnswers() {
    NorvaneSetRetrievalSource(nullptr, nullptr);
    NorvaneSetClock(nullptr, nullptr);
}

void ReplayedAnswers::tell_rest() const {
    for (std::size_t i = 0; i < given_.size(); ++i) {
        if (!given_[i]) {
            differences_("a retrieval was not asked for: " + name_of(check_.retrievals[i]));
        }
    }
    if (readings_ < check_.readings.size()) {
        differences_("clocks were read less often");
    }
}

void ReplayedAnswers::retrieve(LPCSTR url, LPCSTR kind, DWORD flags, DWORD /*timeout*/,
                               NORVANE_RETRIEVAL_ANSWER* answer, void* self) noexcept {
    // A failure of the process: it says nothing about the material, and ends the check.
    answer->dwError = ERROR_INTERNAL_ERROR;
    try {
        static_cast<ReplayedAnswers*>(self)->answer(
            url, kind == CONTEXT_OID_CRL, (flags & CRYPT_CACHE_ONLY_RETRIEVAL) != 0, *answer);
    } catch (const std::bad_alloc&) {
        answer->dwError = ERROR_NOT_ENOUGH_MEMORY;
    } catch (const std::exception&) { // Nothing was given, and so the check ends.
    }
}

void ReplayedAnswers::answer(LPCSTR url, bool is_crl, bool cache_only,
                             NORVANE_RETRIEVAL_ANSWER& answer) {
    EvidenceRetrieval asked;
    asked.url = as_json_tells(url);
    asked.kind = is_crl ? "crl" : "certificate";
    asked.from = cache_only ? "cache" : "network";
    for (std::size_t i = 0; i < given_.size(); ++i) {
        const EvidenceRetrieval& each = check_.retrievals[i];
        if (!given_[i] && each.url == asked.url && each.kind == asked.kind &&
            each.from == asked.from) {
            given_[i] = true;
            give(each, answer);
            return;
        }
    }
    differences_("the evidence has no such retrieval: " + name_of(asked));
}

void ReplayedAnswers::give(const EvidenceRetrieval& retrieval, NORVANE_RETRIEVAL_ANSWER& answer) {
    blobs_.clear();
    for (const std::string& name : retrieval.objects) {
        const std::string& content = members_.at(name);
        auto* const octets = const_cast<char*>(content.data());
        blobs_.push_back({static_cast<DWORD>(content.size()), reinterpret_cast<BYTE*>(octets)});
    }
    answer.dwError = retrieval.error;
    answer.cObject = static_cast<DWORD>(blobs_.size());
    answer.rgObject = blobs_.data();
    answer.pszCause = retrieval.cause.c_str();
    answer.fRemembered = retrieval.remembered ? TRUE : FALSE;
    answer.fConfirmed = retrieval.confirmed ? TRUE : FALSE;
    answer.ullMilliseconds = retrieval.milliseconds;
    answer.ullAgeSeconds = retrieval.age_seconds;
}

ULONGLONG ReplayedAnswers::read_clock(DWORD clock, ULONGLONG /*reading*/, void* self) noexcept {
    auto& answers = *static_cast<ReplayedAnswers*>(self);
    return counts(clock, answers.accumulative_) ? answers.next_reading(clock) : answers.moment_;
}

/// Of more readings than there were, each is like the last; what follows from that shows in the
/// record.
ULONGLONG ReplayedAnswers::next_reading(DWORD clock) {
    const auto& readings = check_.readings;
    while (readings_ < readings.size() && readings[readings_].clock != clock) {
        ++readings_;
    }
    const std::size_t place = std::min(readings_, readings.size());
    readings_ = std::min(place + 1, readings.size());
    if (readings.empty()) {
        return moment_;
    }
    const std::int64_t passed = readings[std::min(place, readings.size() - 1)].milliseconds;
    return static_cast<ULONGLONG>(
        std::max(static_cast<std::int64_t>(moment_) + passed, std::int64_t{0}));
}

} // namespace norvane
