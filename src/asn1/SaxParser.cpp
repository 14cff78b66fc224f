#include "asn1/SaxParser.h"

#include <array>
#include <string>

namespace norvane {
namespace {

bool is_space(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
bool is_letter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool is_digit(char c) { return c >= '0' && c <= '9'; }
/// The characters that names of ASN.1 and of encodings consist of.
bool is_name_character(char c) {
    return is_letter(c) || is_digit(c) || c == '-' || c == '_' || c == '.';
}

class SaxParser {
  public:
    SaxParser(std::string_view text, SaxHandler& handler)
        : text_(text), rest_(text), handler_(handler) {}

    void parse() {
        handler_.init();
        if (take("<?xml")) {
            declaration();
        }
        take_while(is_space);
        do {
            step();
        } while (depth_ != 0);
        take_while(is_space);
        if (!rest_.empty()) {
            refuse("something stands behind the outermost element");
        }
    }

  private:
    void step() {
        if (depth_ != 0) {
            content();
        }
        if (take("</")) {
            end_tag();
        } else if (take("<")) {
            start_tag();
        } else {
            refuse("an element is expected");
        }
    }

    void start_tag() {
        const std::string_view name = tag_name();
        if (depth_ == max_xer_nesting) {
            refuse("elements are nested too deeply");
        }
        open_[depth_++] = name;
        if (!handler_.startElement(name)) {
            refuse("the element is not expected here");
        }
    }

    void end_tag() {
        const std::string_view name = tag_name();
        if (depth_ == 0 || open_[depth_ - 1] != name) {
            refuse("the tag closes no element that is open");
        }
        --depth_;
        if (!handler_.endElement(name)) {
            refuse("the element is incomplete");
        }
    }

    std::string_view tag_name() {
        const std::string_view name = take_while(is_name_character);
        if (name.empty() || !is_letter(name.front())) {
            refuse("the name of an element is expected");
        }
        require(">");
        return name;
    }

    /// What stands before the next tag.
    void content() {
        const std::string_view run = rest_.substr(0, rest_.find('<'));
        const std::string_view space = take_while(is_space);
        if (space.size() == run.size()) {
            return;
        }
        if (run.find('&') != std::string_view::npos) {
            refuse("there are no references and no entities");
        }
        if (!handler_.characters(run)) {
            refuse("the content is not what the element holds");
        }
        rest_.remove_prefix(run.size() - space.size());
    }

    /// XMLDecl of XML 1.0, from behind its first five characters.
    void declaration() {
        require_space();
        require("version");
        if (!quoted().starts_with("1.")) {
            refuse("XML has no such version");
        }
        bool spaced = !take_while(is_space).empty();
        if (spaced && take("encoding")) {
            if (const std::string_view name = quoted(); !is_letter(name.front())) {
                refuse("the name of an encoding is expected");
            }
            spaced = !take_while(is_space).empty();
        }
        if (spaced && take("standalone")) {
            if (const std::string_view answer = quoted(); answer != "yes" && answer != "no") {
                refuse("yes or no is expected");
            }
            take_while(is_space);
        }
        require("?>");
    }

    /// The value behind the name of a pseudo-attribute: the equals sign, and a name in quotes.
    std::string_view quoted() {
        take_while(is_space);
        require("=");
        take_while(is_space);
        const std::string_view quote = rest_.substr(0, 1);
        if (quote != "\"" && quote != "'") {
            refuse("a quote is expected");
        }
        require(quote);
        const std::string_view value = take_while(is_name_character);
        if (value.empty()) {
            refuse("a value is expected");
        }
        require(quote);
        return value;
    }

    bool take(std::string_view expected) {
        if (!rest_.starts_with(expected)) {
            return false;
        }
        rest_.remove_prefix(expected.size());
        return true;
    }

    template <class Predicate>
    std::string_view take_while(Predicate belongs) {
        std::size_t count = 0;
        while (count != rest_.size() && belongs(rest_[count])) {
            ++count;
        }
        const std::string_view taken = rest_.substr(0, count);
        rest_.remove_prefix(count);
        return taken;
    }

    void require(std::string_view expected) {
        if (!take(expected)) {
            refuse("\"" + std::string(expected) + "\" is expected");
        }
    }

    void require_space() {
        if (take_while(is_space).empty()) {
            refuse("white space is expected");
        }
    }

    [[noreturn]] void refuse(std::string_view reason) const {
        throw OSRTSAXException(reason, static_cast<std::uint32_t>(text_.size() - rest_.size()));
    }

    std::string_view text_;
    std::string_view rest_;
    SaxHandler& handler_;
    std::array<std::string_view, max_xer_nesting> open_;
    std::size_t depth_ = 0;
};

} // namespace

OSRTSAXException::OSRTSAXException(std::string_view reason, std::uint32_t offset)
    : std::runtime_error("XML text at offset " + std::to_string(offset) + ": " +
                         std::string(reason)) {}

void parse_xml(ByteView text, SaxHandler& handler) {
    if (text.length > max_xer_length) {
        throw OSRTSAXException("the text is longer than " + std::to_string(max_xer_length) +
                                   " octets",
                               max_xer_length);
    }
    SaxParser({reinterpret_cast<const char*>(text.data), text.length}, handler).parse();
}

} // namespace norvane
