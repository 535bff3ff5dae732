#pragma once

#include <cstdint>

#include "ado/com/SystemHeaders.h"
#include "base/Text.h"
#include "base/Value.h"

namespace ado::com {

/// Owns a VARIANT and everything that it refers to. Values pass without loss: null, every unit of a text, true as -1.
class Variant {
public:
    Variant() = default;
    Variant(Variant&& other) noexcept;
    Variant& operator=(Variant&& other) noexcept;
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;
    ~Variant();

    explicit Variant(const base::Value& value);
    explicit Variant(base::TextView text);
    explicit Variant(std::int32_t number);
    /// Adds a reference to the object.
    explicit Variant(IDispatch* object);

    /// An empty VARIANT for a call to put its result in.
    VARIANT* out() { return &variant_; }

    /// A whole number that does not fit into 32 bits becomes a Decimal; an empty variant becomes null.
    /// @throws 13 if the content is not a value: objects, error codes, arrays of anything but bytes
    base::Value value() const;

    /// Accepts a number of any width: 64-bit ADO counts in 64 bits.
    /// @throws the system's error if it is not a number or does not fit
    std::int32_t int32() const;
    bool boolean() const;
    base::Text text() const;

    /// The object; the variant still owns it. @throws 13 if it holds none
    IDispatch* object() const;

    const VARIANT& raw() const { return variant_; }

private:
    Variant convertedTo(VARTYPE type) const;

    VARIANT variant_{};
};

/// The number as the system's DECIMAL. @throws 6 if its digits need more than 96 bits
DECIMAL decimalOf(const base::Decimal& value);

/// As ADO writes it: {00000514-0000-0010-8000-00AA006D2EA4}.
base::Text bracedText(const base::Guid& guid);

}  // namespace ado::com
