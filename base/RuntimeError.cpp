#include "base/RuntimeError.h"

#include <cassert>
#include <utility>

namespace base {
namespace {

TextView descriptionOf(RuntimeErrorNumber number) {
    switch (number) {
        case RuntimeErrorNumber::InvalidProcedureCall:
            return u"Ungültiger Prozeduraufruf oder ungültiges Argument";
        case RuntimeErrorNumber::Overflow:
            return u"Überlauf";
        case RuntimeErrorNumber::SubscriptOutOfRange:
        case RuntimeErrorNumber::IndexOutOfBounds:
            return u"Index außerhalb des gültigen Bereichs";
        case RuntimeErrorNumber::TypeMismatch:
            return u"Typen unverträglich";
        case RuntimeErrorNumber::ObjectVariableNotSet:
            return u"Objektvariable oder With-Blockvariable nicht festgelegt";
        case RuntimeErrorNumber::InvalidUseOfNull:
            return u"Unzulässige Verwendung von Null";
        case RuntimeErrorNumber::ElementNotFound:
            return u"Element nicht gefunden";
        case RuntimeErrorNumber::KeyNotUnique:
            return u"Schlüssel ist in der Auflistung nicht eindeutig";
        case RuntimeErrorNumber::InvalidKey:
            return u"Ungültiger Schlüssel";
    }
    assert(false);
    return {};
}

}  // namespace

RuntimeError::RuntimeError(std::int32_t number, Text description)
    : number_(number),
      description_(std::move(description)),
      what_(std::to_string(number) + ": " + toUtf8(description_)) {}

RuntimeError runtimeError(RuntimeErrorNumber number) {
    return {static_cast<std::int32_t>(number), Text(descriptionOf(number))};
}

}  // namespace base
