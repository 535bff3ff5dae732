#pragma once

#include <cstdint>

#include "ado/com/SystemHeaders.h"
#include "base/Text.h"
#include "base/Value.h"

namespace ado::com {

/// A VARIANT and what hangs on it. Values pass through without loss: null, every unit of a text, the sign of true.
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
    /// Shares the object.
    explicit Variant(IDispatch* object);

    /// For a call to put its result in; empty.
    VARIANT* out() { return &variant_; }

    /// A whole number that does not fit into 32 bits comes as a Decimal; an empty variant as null.
    /// @throws 13 for what is no value: objects, error codes, arrays of anything but bytes
    base::Value value() const;

    /// Whatever width the number is delivered in: 64-bit ADO counts in 64 bits.
    /// @throws the system's error if it is no number or does not fit
    std::int32_t int32() const;
    bool boolean() const;
    base::Text text() const;

    /// The object, still owned by the variant. @throws 13 if there is none
    IDispatch* object() const;

    const VARIANT& raw() const { return variant_; }

private:
    Variant convertedTo(VARTYPE type) const;

    VARIANT variant_{};
};

/// The system's form of the number. @throws 6 if its digits need more than 96 bits
DECIMAL decimalOf(const base::Decimal& value);

/// As ADO writes it: {00000514-0000-0010-8000-00AA006D2EA4}.
base::Text bracedText(const base::Guid& guid);

}  // namespace ado::com
