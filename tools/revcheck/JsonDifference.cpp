#include "JsonDifference.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace norvane {
namespace {

using Json = nlohmann::ordered_json;
using Pointer = Json::json_pointer;

constexpr std::size_t max_differences = 10;
constexpr std::size_t max_value_octets = 80;
/// A record has some two hundred branches in each other, with an array and an object for each.
constexpr int max_nesting = 500;

Json parse(std::string_view text) {
    const auto guard = [](int depth, Json::parse_event_t /*event*/, Json& /*parsed*/) {
        if (depth > max_nesting) {
            throw std::length_error("nested too deeply");
        }
        return true;
    };
    return Json::parse(text, guard);
}

class Comparison {
  public:
    void compare(const Json& expected, const Json& got, const Pointer& place) {
        if (differences.size() == max_differences) {
            return;
        }
        if (expected.is_object() && got.is_object()) {
            compare_objects(expected, got, place);
        } else if (expected.is_array() && got.is_array()) {
            compare_arrays(expected, got, place);
        } else if (expected != got) {
            add(&expected, &got, place);
        }
    }

    std::vector<std::string> differences;

  private:
    static std::string shown(const Json* value) {
        const std::string text = value == nullptr
                                     ? "nothing"
                                     : value->dump(-1, ' ', true, Json::error_handler_t::replace);
        return text.size() > max_value_octets ? text.substr(0, max_value_octets) + "..." : text;
    }

    void add(const Json* expected, const Json* got, const Pointer& place) {
        if (differences.size() < max_differences) {
            differences.push_back("at " + place.to_string() + ": expected " + shown(expected) +
                                  ", got " + shown(got));
        }
    }

    void compare_objects(const Json& expected, const Json& got, const Pointer& place) {
        for (const auto& [name, value] : expected.items()) {
            if (got.contains(name)) {
                compare(value, got.at(name), place / name);
            } else {
                add(&value, nullptr, place / name);
            }
        }
        for (const auto& [name, value] : got.items()) {
            if (!expected.contains(name)) {
                add(nullptr, &value, place / name);
            }
        }
    }

    void compare_arrays(const Json& expected, const Json& got, const Pointer& place) {
        for (std::size_t i = 0; i < std::max(expected.size(), got.size()); ++i) {
            if (i < expected.size() && i < got.size()) {
                compare(expected[i], got[i], place / i);
            } else {
                add(i < expected.size() ? &expected[i] : nullptr,
                    i < got.size() ? &got[i] : nullptr, place / i);
            }
        }
    }
};

} // namespace

std::vector<std::string> differences_of(std::string_view expected, std::string_view got) {
    if (expected == got) {
        return {};
    }
    try {
        Comparison comparison;
        comparison.compare(parse(expected), parse(got), Pointer());
        if (!comparison.differences.empty()) {
            return comparison.differences;
        }
    } catch (const Json::exception&) {
        return {"what is expected is no JSON"};
    } catch (const std::length_error&) {
        return {"what is expected is nested too deeply"};
    }
    return {"what is expected is written in another way"};
}

} // namespace norvane
