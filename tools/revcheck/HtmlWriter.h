#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace norvane {

/// Markup that stands in this program: nothing that is known only when it runs can become any.
class Markup {
  public:
    template <std::size_t size>
    // NOLINTNEXTLINE(google-explicit-constructor,modernize-avoid-c-arrays): a literal is markup
    consteval Markup(const char (&literal)[size]) : text_(literal, size - 1) {}

    [[nodiscard]] std::string_view text() const noexcept { return text_; }

  private:
    std::string_view text_;
};

struct Attribute {
    Markup name;
    std::string value; ///< any text
};
using Attributes = std::vector<Attribute>;

/// Puts HTML together that is well-formed XML as well. Tags and names of attributes are Markup; all
/// else is text, is made printable (Text.h) and escaped, and so can neither end its place nor
/// change how what stands around it is shown.
class HtmlWriter {
  public:
    /// An element that is open; it is closed at the end of the scope.
    class Element {
      public:
        Element(HtmlWriter& writer, Markup name) : writer_(writer), name_(name) {}
        Element(const Element&) = delete;
        Element& operator=(const Element&) = delete;
        ~Element() { writer_.close(name_); }

      private:
        HtmlWriter& writer_;
        Markup name_;
    };

    [[nodiscard]] Element element(Markup name, const Attributes& attributes = {});
    /// An element with a text in it.
    void line(Markup name, const Attributes& attributes, std::string_view text);
    void line(Markup name, std::string_view text) { line(name, {}, text); }
    /// An element that never has content: in HTML only some are, in SVG any may be.
    void empty(Markup name, const Attributes& attributes = {});
    void text(std::string_view text);
    void markup(Markup markup) { out_ += markup.text(); }

    /// Appends what another writer has put together.
    void add(const HtmlWriter& other) { out_ += other.out_; }
    [[nodiscard]] const std::string& written() const noexcept { return out_; }

  private:
    void open(Markup name, const Attributes& attributes, Markup end);
    void close(Markup name) { out_.append("</").append(name.text()).append(">\n"); }

    std::string out_;
};

} // namespace norvane
