#include "DecisionRecord.h"

#include <algorithm>
#include <new>

namespace norvane {

std::string_view RecordedEvent::value(std::string_view name) const {
    const auto found = std::ranges::find(values, name, &Value::name);
    return found == values.end() ? std::string_view() : found->text;
}

std::size_t step_over_inner_question(const RecordedNode& node, std::size_t place) {
    return node.code == "question" || node.code == "member_check" ? node.end : place + 1;
}

const RecordedEvent& happening(const RecordedNode& node) {
    return node.is_branch ? node.outcome : node;
}

std::optional<std::size_t> object_in(const RecordedEvent& event, std::string_view role) {
    const auto found = std::ranges::find(event.objects, role, &RecordedEvent::Object::role);
    return found == event.objects.end() ? std::nullopt : std::optional(found->index);
}

DecisionRecord::DecisionRecord(Keeping keeping) : keeping_(keeping) {
    NorvaneSetRecordListener(&DecisionRecord::hear, this);
}

DecisionRecord::~DecisionRecord() { NorvaneSetRecordListener(nullptr, nullptr); }

void DecisionRecord::hear(const NORVANE_RECORD_EVENT* event, void* self) noexcept {
    auto& record = *static_cast<DecisionRecord*>(self);
    try {
        record.take(*event);
    } catch (const std::exception&) { // No memory: the decision goes on without a witness.
        record.cut_ = true;
    }
}

void DecisionRecord::take(const NORVANE_RECORD_EVENT& event) {
    switch (event.dwKind) {
    case NORVANE_RECORD_BEGIN:
        begin(event, true);
        break;
    case NORVANE_RECORD_END:
        end(event);
        break;
    default:
        begin(event, false);
        break;
    }
}

void DecisionRecord::begin(const NORVANE_RECORD_EVENT& event, bool is_branch) {
    if (unseen_ != 0 || nodes_.size() == max_nodes || open_.size() == max_depth) {
        cut_ = true;
        unseen_ += is_branch ? 1 : 0;
        return;
    }
    if (is_branch) {
        // Counted first, so that its end finds it even if there is no memory for the rest.
        ++unseen_;
        open_.reserve(open_.size() + 1);
    }
    RecordedNode node;
    static_cast<RecordedEvent&>(node) = read(event);
    node.depth = open_.size();
    node.end = nodes_.size() + 1;
    node.is_branch = is_branch;
    nodes_.push_back(std::move(node));
    if (is_branch) {
        open_.push_back(nodes_.size() - 1);
        --unseen_;
    }
}

void DecisionRecord::end(const NORVANE_RECORD_EVENT& event) {
    if (unseen_ != 0) {
        --unseen_;
        return;
    }
    if (open_.empty()) { // Its beginning was not heard.
        return;
    }
    RecordedNode& branch = nodes_[open_.back()];
    open_.pop_back();
    branch.end = nodes_.size();
    branch.outcome.code = event.pszCode;
    branch.outcome = read(event);
}

RecordedEvent DecisionRecord::read(const NORVANE_RECORD_EVENT& event) {
    RecordedEvent result;
    result.code = event.pszCode;
    result.reference = event.pszReference == nullptr ? "" : event.pszReference;
    for (const NORVANE_RECORD_VALUE& value : std::span(event.rgValue, event.cValue)) {
        std::string_view text = value.pszText;
        if (text.size() > max_value_octets) {
            text = text.substr(0, max_value_octets);
            cut_ = true;
        }
        result.values.push_back({value.pszName, std::string(text)});
    }
    for (const NORVANE_RECORD_OBJECT& object : std::span(event.rgObject, event.cObject)) {
        take_object(object, result);
    }
    return result;
}

void DecisionRecord::take_object(const NORVANE_RECORD_OBJECT& object, RecordedEvent& event) {
    const auto [first, last] = objects_by_size_.equal_range(object.cbEncoded);
    const auto known = std::find_if(
        first, last, [&](const auto& each) { return is_same(objects_[each.second], object); });
    if (known != last) {
        event.objects.push_back({object.pszRole, known->second});
        return;
    }
    if (object.cbEncoded > max_object_octets - object_octets_) {
        cut_ = true;
        return;
    }
    RecordedObject made = make_recorded_object(object, keeping_);
    object_octets_ += made.encoded.size();
    objects_.push_back(std::move(made));
    objects_by_size_.emplace(object.cbEncoded, objects_.size() - 1);
    event.objects.push_back({object.pszRole, objects_.size() - 1});
}

} // namespace norvane
