#include "Explanation.h"

#include "EventWords.h"
#include "Text.h"

#include <algorithm>
#include <iterator>

namespace norvane {
namespace {

constexpr std::string_view quiet_outcomes[] = {
    "path_holds", "member_good",        "signer_found",    "issuer_found",
    "retrieved",  "response_confirmed", "response_cached", "not_in_the_cache",
};

constexpr std::size_t indentation = 2;
constexpr std::size_t deepest_indentation = 24; ///< where lines would get too short
constexpr std::size_t least_width = 40;

/// Octets of UTF-8 that continue a character take no column.
std::size_t columns_of(std::string_view text) {
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}

/// Appends words, each line after the first behind `indent` and two more columns.
void fold(std::string& out, std::string_view text, std::size_t indent, std::size_t width) {
    std::size_t column = indent;
    out.append(indent, ' ');
    bool at_beginning = true;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        const std::string_view word = text.substr(0, end);
        const std::size_t columns = columns_of(word);
        if (!at_beginning && column + 1 + columns > width) {
            column = indent + indentation;
            out.append("\n").append(column, ' ');
            at_beginning = true;
        }
        out.append(at_beginning ? "" : " ").append(word);
        column += columns + (at_beginning ? 0 : 1);
        at_beginning = false;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    out += '\n';
}

} // namespace

bool is_quiet(const RecordedNode& node) {
    return std::ranges::find(quiet_outcomes, node.outcome.code) != std::end(quiet_outcomes);
}

std::string explanation(const DecisionRecord& record, std::size_t width) {
    width = std::max(width, least_width);
    std::string text;
    const auto nodes = record.nodes();
    for (std::size_t place = 0; place < nodes.size();) {
        const RecordedNode& node = nodes[place];
        std::string line = phrase_of(node, record);
        const std::string outcome = phrase_of(node.outcome, record);
        if (!outcome.empty()) {
            line += " -- " + outcome;
        }
        const std::size_t within = node.end - place - 1;
        const bool is_closed = is_quiet(node) && within != 0;
        if (is_closed) {
            line += " (+" + std::to_string(within) + ")";
        }
        if (!node.reference.empty()) {
            line += " [" + node.reference + "]";
        }
        fold(text, printable(line), std::min(node.depth * indentation, deepest_indentation), width);
        place = is_closed ? node.end : place + 1;
    }
    if (record.is_cut()) {
        text += "The record was cut: the decision was larger than what is kept of one.\n";
    }
    return text;
}

} // namespace norvane
