#pragma once

#include <array>

#include "ado/Ado.h"
#include "base/Text.h"
#include "base/Value.h"

namespace ado::embedded {

/// A property of the provider: a text that can be set until the connection is open.
class ProviderProperty final : public ado::Property {
public:
    explicit ProviderProperty(base::TextView name) : name_(name) {}

    base::TextView name() const { return name_; }
    const base::Text& text() const { return text_; }
    void setLocked(bool locked) { locked_ = locked; }

    base::Value Value() const override { return text_; }
    /// Null is the empty text. @throws 13 for what is no text
    void setValue(const base::Value& value) override;

private:
    base::TextView name_;
    base::Text text_;
    bool locked_ = false;
};

/// The properties of a connection. They come into being when the provider is named.
class ProviderProperties final : public ado::Properties {
public:
    ado::Property& Item(base::TextView name) override;

    void create() { exist_ = true; }
    void setLocked(bool locked);

    const base::Text& dataSource() const { return properties_[0].text(); }
    const base::Text& databasePassword() const { return properties_[1].text(); }

private:
    std::array<ProviderProperty, 2> properties_{ProviderProperty(u"Data Source"),
                                                ProviderProperty(u"Jet OLEDB:Database Password")};
    bool exist_ = false;
};

}  // namespace ado::embedded
