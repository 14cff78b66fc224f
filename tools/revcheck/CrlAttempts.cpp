#include "CrlAttempts.h"

#include "Reasons.h"

#include <algorithm>

namespace norvane {
namespace {

constexpr std::string_view uses[] = {"certificate_listed", "reasons_contributed"};

/// Fills in what the attempt has ended at.
void judge(const DecisionRecord& record, CrlAttempt& attempt) {
    const auto nodes = record.nodes();
    for (std::size_t place = attempt.first; place < attempt.end;) {
        const RecordedNode& node = nodes[place];
        if (std::ranges::find(uses, node.code) != std::end(uses)) {
            attempt.standing = Standing::used;
            attempt.place = place;
            return;
        }
        if (node.code == "reasons_nothing_new") {
            attempt.standing = Standing::nothing_new;
            attempt.place = place;
        }
        place = step_over_inner_question(node, place);
    }
    const auto failure = farthest_failure(record, attempt.first, attempt.end);
    if (failure && attempt.standing == Standing::unknown) {
        attempt.standing = Standing::closed;
        attempt.place = failure->place;
        attempt.distance = failure->distance;
    }
}

/// The attempts that a branch "crl" tells of.
void add_attempts(const DecisionRecord& record, std::size_t branch, bool at_points,
                  std::vector<CrlAttempt>& attempts) {
    const auto nodes = record.nodes();
    const auto crl = object_in(nodes[branch], "crl");
    if (!crl) { // It was cut.
        return;
    }
    const std::size_t before = attempts.size();
    for (std::size_t place = branch + 1; place < nodes[branch].end; place = nodes[place].end) {
        if (nodes[place].code == "point") {
            attempts.push_back({.crl = *crl,
                                .branch = branch,
                                .first = place,
                                .end = nodes[place].end,
                                .scope = AttemptScope::point,
                                .point = nodes[place].value("distributionPoint")});
        }
    }
    if (attempts.size() == before) {
        attempts.push_back(
            {.crl = *crl,
             .branch = branch,
             .first = branch,
             .end = nodes[branch].end,
             .scope = at_points ? AttemptScope::all_points : AttemptScope::without_point});
    }
}

} // namespace

std::vector<CrlAttempt> attempts_of(const DecisionRecord& record, std::size_t question) {
    std::vector<CrlAttempt> attempts;
    const auto nodes = record.nodes();
    bool at_points = false;
    for (std::size_t place = question + 1; place < nodes[question].end;) {
        const RecordedNode& node = nodes[place];
        if (node.code == "distribution_points" || node.code == "crls_of_the_issuer") {
            at_points = node.code == "distribution_points";
        } else if (node.code == "crl") {
            add_attempts(record, place, at_points, attempts);
        }
        place = step_over_inner_question(node, place);
    }
    for (CrlAttempt& attempt : attempts) {
        judge(record, attempt);
    }
    return attempts;
}

std::vector<std::size_t> crls_of(const DecisionRecord& record, std::size_t question) {
    std::vector<std::size_t> crls;
    std::vector<bool> seen(record.objects().size());
    const auto nodes = record.nodes();
    for (std::size_t place = question + 1; place < nodes[question].end;) {
        for (const RecordedEvent::Object& each : nodes[place].objects) {
            if (record.objects()[each.index].is_crl && !seen[each.index]) {
                seen[each.index] = true;
                crls.push_back(each.index);
            }
        }
        place = step_over_inner_question(nodes[place], place);
    }
    return crls;
}

} // namespace norvane
