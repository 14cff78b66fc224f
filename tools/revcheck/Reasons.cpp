#include "Reasons.h"

#include "EventWords.h"
#include "Explanation.h"

#include <algorithm>

namespace norvane {
namespace {

// What a test of a certificate failed at is nearer to a verdict where the certificate is to sign a
// CRL than where it is to be the issuer, and nearer still on the path of that signer.
constexpr std::uint16_t first_test_distance = 40;
constexpr std::uint16_t last_test_distance = 49;
constexpr std::uint16_t test_at_key_gate = 78;
constexpr std::uint16_t test_of_signer = 110;
constexpr std::uint16_t test_on_path = 180;

// Retrievals of CRLs by what they failed at; those of issuers only tell why one is not known.
constexpr std::uint16_t first_retrieval_distance = 60;
constexpr std::uint16_t last_retrieval_distance = 69;
constexpr std::uint16_t retrieval_of_issuer = 31;
constexpr std::uint16_t retrieval_on_path = 205;

/// What is nearer to a verdict than CRLs that cover too little is worth a word beside it.
constexpr std::uint16_t distance_of_partial_coverage = 99;

constexpr std::size_t max_lines = 6;
constexpr std::size_t max_retrievals = 2;

bool is_between(std::uint16_t distance, std::uint16_t first, std::uint16_t last) {
    return distance >= first && distance <= last;
}

bool is_failed_retrieval(std::uint16_t distance) {
    return is_between(distance, first_retrieval_distance, last_retrieval_distance);
}

/// The branches around a node.
class Surroundings {
  public:
    explicit Surroundings(std::span<const RecordedNode> nodes) : nodes_(nodes) {}

    void enter(std::size_t place) {
        while (!open_.empty() && nodes_[open_.back()].end <= place) {
            open_.pop_back();
        }
        if (nodes_[place].is_branch) {
            open_.push_back(place);
        }
    }
    [[nodiscard]] bool has(std::string_view code) const {
        return std::ranges::any_of(open_,
                                   [&](std::size_t place) { return nodes_[place].code == code; });
    }

  private:
    std::span<const RecordedNode> nodes_;
    std::vector<std::size_t> open_;
};

std::uint16_t distance_of(const RecordedEvent& event, const Surroundings& around) {
    const std::uint16_t distance = words_of(event.code).distance;
    if (is_between(distance, first_test_distance, last_test_distance)) {
        if (around.has("path")) {
            return distance + test_on_path;
        }
        if (around.has("signer_search")) {
            return distance + test_of_signer;
        }
        return around.has("crl") ? distance + test_at_key_gate : distance;
    }
    if (event.code == "crl_signature_wrong" && !around.has("signer_search")) {
        return 0; // The gate that it closed says more.
    }
    if (is_failed_retrieval(distance) && around.has("issuer_urls")) {
        return around.has("path") ? retrieval_on_path : retrieval_of_issuer;
    }
    return distance;
}

/// The places of the nodes in which the question was decided at the last.
struct Range {
    std::size_t first;
    std::size_t end;
};

Range last_part_of(std::span<const RecordedNode> nodes, std::size_t question) {
    Range range{question + 1, nodes[question].end};
    for (std::size_t place = range.first; place < nodes[question].end; place = nodes[place].end) {
        if (nodes[place].code.starts_with("pass_over_")) {
            range.first = place;
        }
    }
    return range;
}

/// What failed, and how near to a verdict.
struct Failure {
    Reason reason;
    std::uint16_t distance = 0;
    std::size_t place = 0;
};

/// Whether a branch is that of a CRL which covers a reason.
bool has_contributed(std::span<const RecordedNode> nodes, std::size_t branch) {
    for (std::size_t place = branch + 1; place < nodes[branch].end && nodes[branch].code == "crl";
         ++place) {
        if (nodes[place].code == "reasons_contributed") {
            return true;
        }
        if (nodes[place].code == "question") {
            place = nodes[place].end - 1;
        }
    }
    return false;
}

/// Calls `visit` for each failure of a question, and not for those of questions inside it, nor for
/// those of a branch that came to what it was for.
template <class Visit>
void for_each_failure(std::span<const RecordedNode> nodes, Range range, Visit visit) {
    Surroundings around(nodes);
    for (std::size_t place = range.first; place < range.end;) {
        const RecordedNode& node = nodes[place];
        around.enter(place);
        const RecordedEvent& event = happening(node);
        const bool is_retrieval = node.code == "retrieval";
        visit(Failure{{&event, is_retrieval ? &node : nullptr}, distance_of(event, around), place});
        const bool is_closed = is_quiet(node) || has_contributed(nodes, place);
        place = is_closed ? node.end : step_over_inner_question(node, place);
    }
}

/// That CRLs cover some reasons and not all, if that is so in a pass, which stands at `pass`.
std::vector<Reason> partial_coverage(std::span<const RecordedNode> nodes, std::size_t pass) {
    for (std::size_t place = pass + 1; place < nodes[pass].end; place = nodes[place].end) {
        const RecordedEvent& outcome = nodes[place].outcome;
        if (outcome.code == "reasons_not_covered" && outcome.value("covered") != "none") {
            return {Reason{&outcome, nullptr}};
        }
    }
    return {};
}

std::optional<std::size_t> question_in(std::span<const RecordedNode> nodes, std::size_t branch) {
    for (std::size_t place = branch + 1; place < nodes[branch].end; ++place) {
        if (nodes[place].code == "question") {
            return place;
        }
    }
    return std::nullopt;
}

std::string line_of(const Reason& reason, const DecisionRecord& record) {
    const std::string phrase = phrase_of(*reason.event, record);
    return reason.retrieval == nullptr
               ? phrase
               : std::string(reason.retrieval->value("url")) + ": " + phrase;
}

} // namespace

std::size_t last_question_of(const DecisionRecord& record) {
    const std::span<const RecordedNode> nodes = record.nodes();
    std::size_t last = 0;
    for (std::size_t place = 0; place < nodes.size(); place = nodes[place].end) {
        last = nodes[place].code == "question" ? place : last;
    }
    return last;
}

std::vector<Reason> find_reasons(const DecisionRecord& record, std::size_t question) {
    const std::span<const RecordedNode> nodes = record.nodes();
    if (question >= nodes.size()) {
        return {};
    }
    Failure decisive;
    std::vector<Reason> retrievals;
    std::vector<Reason> misses; // of the cache
    const Range whole{question + 1, nodes[question].end};
    const auto is_of_the_question = [](std::uint16_t distance) { return distance >= 900; };
    for_each_failure(nodes, whole, [&](const Failure& failure) {
        if (is_of_the_question(failure.distance) && failure.distance > decisive.distance) {
            decisive = failure;
        }
    });
    for_each_failure(nodes, last_part_of(nodes, question), [&](const Failure& failure) {
        if (failure.distance > decisive.distance) {
            decisive = failure;
        }
        if (failure.reason.retrieval == nullptr) {
            return;
        }
        if (failure.reason.event->code == "not_in_the_cache") {
            misses.push_back(failure.reason);
        } else if (failure.distance != 0 && failure.reason.retrieval->value("from") == "network") {
            retrievals.push_back(failure.reason);
        }
    });
    if (decisive.reason.event == nullptr) {
        return {};
    }
    std::vector<Reason> reasons = partial_coverage(nodes, last_part_of(nodes, question).first);
    if (reasons.empty() || decisive.distance > distance_of_partial_coverage) {
        reasons.push_back(decisive.reason);
    }
    if (decisive.reason.event->code == "member_not_checked") {
        if (const auto inner = question_in(nodes, decisive.place)) {
            std::ranges::copy(find_reasons(record, *inner), std::back_inserter(reasons));
        }
    }
    std::erase_if(retrievals, [&](const Reason& retrieval) {
        return retrieval.event == decisive.reason.event;
    });
    if (retrievals.empty() && decisive.distance < first_retrieval_distance) {
        retrievals = std::move(misses); // Nobody was asked, and something is missing.
    }
    retrievals.resize(std::min(retrievals.size(), max_retrievals));
    std::ranges::copy(retrievals, std::back_inserter(reasons));
    return reasons;
}

std::optional<FailurePlace> farthest_failure(const DecisionRecord& record, std::size_t first,
                                             std::size_t end) {
    FailurePlace farthest;
    for_each_failure(record.nodes(), {first, end}, [&](const Failure& failure) {
        if (failure.distance > farthest.distance) {
            farthest = {failure.place, failure.distance};
        }
    });
    return farthest.distance == 0 ? std::nullopt : std::optional(farthest);
}

std::vector<std::string> reason_lines(const std::vector<Reason>& reasons,
                                      const DecisionRecord& record) {
    std::vector<std::string> lines;
    std::string_view advice;
    for (const Reason& reason : reasons) {
        if (lines.size() == max_lines - 1) {
            break;
        }
        lines.push_back(line_of(reason, record));
        if (advice.empty() || reason.retrieval == nullptr) {
            const std::string_view own = words_of(reason.event->code).advice;
            advice = own.empty() ? advice : own;
        }
    }
    if (!advice.empty()) {
        lines.emplace_back(advice);
    }
    return lines;
}

} // namespace norvane
