#include "ado/embedded/ProviderProperties.h"

#include "ado/embedded/AdoError.h"
#include "base/RuntimeError.h"

namespace ado::embedded {

void ProviderProperty::setValue(const base::Value& value) {
    if (locked_) throw adoError(AdoErrorNumber::ObjectOpen);
    const auto* text = std::get_if<base::Text>(&value);
    if (text == nullptr && !base::isNull(value)) throw base::runtimeError(base::RuntimeErrorNumber::TypeMismatch);
    text_ = text != nullptr ? *text : base::Text();
}

ado::Property& ProviderProperties::Item(base::TextView name) {
    for (ProviderProperty& property : properties_)
        if (property.isKnown() && base::equalsIgnoringAsciiCase(property.name(), name)) return property;
    throw adoError(AdoErrorNumber::ItemNotFound);
}

void ProviderProperties::setLocked(bool locked) {
    for (ProviderProperty& property : properties_)
        property.setLocked(locked);
}

}  // namespace ado::embedded
