#include "ado/com/ProviderProperties.h"

namespace ado::com {

ado::Property& ProviderProperties::Item(base::TextView name) {
    const Object all(connection_.get(L"Properties").object());
    Object found(all.get(L"Item", Variant(name)).object());
    Entry& entry = entries_[base::Text(name)];
    entry.refer(std::move(found));
    return entry;
}

base::Value ProviderProperties::Entry::Value() const {
    return object_.get(L"Value").value();
}

void ProviderProperties::Entry::setValue(const base::Value& value) {
    object_.put(L"Value", Variant(value));
}

}  // namespace ado::com
