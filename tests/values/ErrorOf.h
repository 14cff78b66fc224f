#pragma once

#include <ostream>
#include <string>
#include <string_view>
#include <typeinfo>

#include "values/Exceptions.h"

namespace norvane {

/// What an operation threw; all empty if nothing.
struct Error {
    std::string type;
    std::string message;
    std::string module;

    [[nodiscard]] bool operator==(const Error&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Error& error) {
        return out << error.type << " '" << error.message << "' at " << error.module;
    }
};

/// The exception that `operation` throws, which must be a CAException or of a class below it.
template <class Operation>
Error error_of(Operation operation) {
    try {
        static_cast<void>(operation());
    } catch (const CAException& error) {
        const std::type_info& type = typeid(error);
        const std::string_view text = error.what();
        const std::size_t start = text.find('\'') + 1;
        return {type == typeid(CAException)           ? "CAException"
                : type == typeid(CAValidateException) ? "CAValidateException"
                : type == typeid(Asn1Exception)       ? "Asn1Exception"
                : type == typeid(Asn1DecodeException) ? "Asn1DecodeException"
                : type == typeid(date_exception)      ? "date_exception"
                                                      : "another class",
                std::string(text.substr(start, text.rfind("' at file:'") - start)), error.file()};
    }
    return {};
}

} // namespace norvane
