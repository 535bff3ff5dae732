#pragma once

#include <array>

#include "ado/Ado.h"
#include "base/Text.h"
#include "base/Value.h"

namespace ado::embedded {

/// A property of the provider: a text that can be set until the connection is opened.
class ProviderProperty final : public ado::Property {
public:
    ProviderProperty(base::TextView name, bool isKnown) : name_(name), isKnown_(isKnown) {}

    base::TextView name() const { return name_; }
    const base::Text& text() const { return text_; }
    void setLocked(bool locked) { locked_ = locked; }
    bool isKnown() const { return isKnown_; }
    void makeKnown() { isKnown_ = true; }

    base::Value Value() const override { return text_; }
    /// Null counts as empty text. @throws 13 if it is not a text
    void setValue(const base::Value& value) override;

private:
    base::TextView name_;
    base::Text text_;
    bool isKnown_;
    bool locked_ = false;
};

/// The properties of a connection. Every provider has a data source; the properties that only this provider has exist
/// once the provider is set.
class ProviderProperties final : public ado::Properties {
public:
    ado::Property& Item(base::TextView name) override;

    /// Called when the provider is set.
    void create() { properties_[1].makeKnown(); }
    void setLocked(bool locked);

    const base::Text& dataSource() const { return properties_[0].text(); }
    const base::Text& databasePassword() const { return properties_[1].text(); }

private:
    std::array<ProviderProperty, 2> properties_{ProviderProperty(u"Data Source", true),
                                                ProviderProperty(u"Jet OLEDB:Database Password", false)};
};

}  // namespace ado::embedded
