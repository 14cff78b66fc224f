#pragma once

#include "RecordedObject.h"

#include <norvane/wincrypt.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace norvane {

/// What an event of a record says, apart from its place in the tree.
struct RecordedEvent {
    struct Object {
        std::string role;
        std::size_t index = 0; ///< into the objects of the record
    };
    struct Value {
        std::string name;
        std::string text; ///< UTF-8 where it is ours, else any octets but zero
    };

    std::string code;
    std::string reference; ///< empty where none applies
    std::vector<Object> objects;
    std::vector<Value> values;

    /// The text of a value; empty if it has none of that name.
    [[nodiscard]] std::string_view value(std::string_view name) const;
};

/// A step, or a branch with all that is in it.
struct RecordedNode : RecordedEvent {
    std::size_t depth = 0; ///< of a question of the program itself: 0
    std::size_t end = 0;   ///< the place behind all that is in the branch
    bool is_branch = false;
    RecordedEvent outcome; ///< of a branch; its code is empty while it is open
};

/// The place behind the node, and where it asks another question behind all that is in that.
[[nodiscard]] std::size_t step_over_inner_question(const RecordedNode& node, std::size_t place);

/// What has happened at a node: the end of a branch, or the step itself.
[[nodiscard]] const RecordedEvent& happening(const RecordedNode& node);

/// The object of an event in a role; nothing if it has none.
[[nodiscard]] std::optional<std::size_t> object_in(const RecordedEvent& event,
                                                   std::string_view role);

/// The record of what a decision said about itself, from the making of this object to its end: it
/// listens to the calling thread. A record of hostile material could grow without end, so it takes
/// `max_nodes` nodes to a depth of `max_depth`, `max_value_octets` of a value and
/// `max_object_octets` of objects in all, and says whether something was cut.
class DecisionRecord {
  public:
    static constexpr std::size_t max_nodes = 50'000;
    static constexpr std::size_t max_depth = 200;
    static constexpr std::size_t max_value_octets = 2000;
    static constexpr std::size_t max_object_octets = 1U << 30;

    explicit DecisionRecord(Keeping keeping = Keeping::small_objects);
    DecisionRecord(const DecisionRecord&) = delete;
    DecisionRecord& operator=(const DecisionRecord&) = delete;
    ~DecisionRecord();

    /// All nodes, each before what is in it.
    [[nodiscard]] std::span<const RecordedNode> nodes() const { return nodes_; }
    [[nodiscard]] const std::deque<RecordedObject>& objects() const { return objects_; }
    [[nodiscard]] bool is_cut() const { return cut_; }

  private:
    static void hear(const NORVANE_RECORD_EVENT* event, void* self) noexcept;
    void take(const NORVANE_RECORD_EVENT& event);
    void begin(const NORVANE_RECORD_EVENT& event, bool is_branch);
    void end(const NORVANE_RECORD_EVENT& event);
    RecordedEvent read(const NORVANE_RECORD_EVENT& event);
    void take_object(const NORVANE_RECORD_OBJECT& object, RecordedEvent& event);

    Keeping keeping_;
    std::vector<RecordedNode> nodes_;
    std::deque<RecordedObject> objects_;
    std::unordered_multimap<std::size_t, std::size_t> objects_by_size_;
    std::vector<std::size_t> open_; ///< the branches that are open, the innermost last
    std::size_t unseen_ = 0;        ///< branches that are open and were cut off
    std::size_t object_octets_ = 0;
    bool cut_ = false;
};

} // namespace norvane
