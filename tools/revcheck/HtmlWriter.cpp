#include "HtmlWriter.h"

#include "Text.h"

namespace norvane {

HtmlWriter::Element HtmlWriter::element(Markup name, const Attributes& attributes) {
    open(name, attributes, ">");
    return {*this, name};
}

void HtmlWriter::line(Markup name, const Attributes& attributes, std::string_view text) {
    const Element element = this->element(name, attributes);
    this->text(text);
}

void HtmlWriter::empty(Markup name, const Attributes& attributes) {
    open(name, attributes, "/>\n");
}

void HtmlWriter::text(std::string_view text) {
    for (const char c : printable(text)) {
        switch (c) {
        case '&':
            out_ += "&amp;";
            break;
        case '<':
            out_ += "&lt;";
            break;
        case '>':
            out_ += "&gt;";
            break;
        case '"':
            out_ += "&quot;";
            break;
        case '\'':
            out_ += "&#39;";
            break;
        default:
            out_ += c;
        }
    }
}

void HtmlWriter::open(Markup name, const Attributes& attributes, Markup end) {
    out_.append("<").append(name.text());
    for (const Attribute& attribute : attributes) {
        out_.append(" ").append(attribute.name.text()).append("=\"");
        text(attribute.value);
        out_ += '"';
    }
    out_ += end.text();
}

} // namespace norvane
