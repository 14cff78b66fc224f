#include "asn1/XerWriter.h"

namespace norvane {

XerWriter::XerWriter(const ASN1CTXT& ctxt) : lines_(!rtCtxtTestFlag(ctxt, ASN1Flag::canonical)) {
    if (!rtCtxtTestFlag(ctxt, ASN1Flag::open_type)) {
        text_ = R"(<?xml version="1.0" encoding="UTF-8"?>)";
        end_line();
    }
}

void XerWriter::open(std::string_view name) {
    start_line();
    text_.append("<").append(name).append(">");
    end_line();
    ++depth_;
}

void XerWriter::close(std::string_view name) {
    --depth_;
    start_line();
    text_.append("</").append(name).append(">");
    end_line();
}

void XerWriter::leaf(std::string_view name, std::string_view content) {
    start_line();
    text_.append("<").append(name).append(">").append(content);
    text_.append("</").append(name).append(">");
    end_line();
}

void XerWriter::start_line() {
    constexpr std::size_t indent = 3;
    if (lines_) {
        text_.append(depth_ * indent, ' ');
    }
}

void XerWriter::end_line() {
    if (lines_) {
        text_ += '\n';
    }
}

} // namespace norvane
