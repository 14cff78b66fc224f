#pragma once

#include <string>
#include <typeinfo>

#include "values/Exceptions.h"

namespace norvane {

/// The text up to the line number of the exception that `operation` throws, which must be a
/// CAException and none of the classes below it.
template <class Operation>
std::string plain_error_of(Operation operation) {
    try {
        operation();
    } catch (const CAException& error) {
        const std::string text = error.what();
        return typeid(error) == typeid(CAException) ? text.substr(0, text.find(" line:"))
                                                    : "another class";
    }
    return "no error";
}

} // namespace norvane
