#pragma once

#include "base/Text.h"
#include "tests/comdouble/AdoDouble.h"

namespace comdouble {

/// The arguments of one call in the order in which they are written; they come the other way round. Those of a plain
/// type are converted to it as dispatch calls do.
class Arguments {
public:
    explicit Arguments(const DISPPARAMS& parameters) : parameters_(parameters) {}

    UINT count() const { return parameters_.cArgs; }

    /// Not given, or left out by name of the missing-argument error.
    bool isMissing(UINT argument) const;

    /// What was given; the missing-argument error where nothing was. Not to be cleared.
    /// @throws Refusal E_NOTIMPL for a reference to a value
    VARIANT at(UINT argument) const;
    /// @param argument  less than count()
    const VARIANT& asGiven(UINT argument) const { return parameters_.rgvarg[parameters_.cArgs - 1 - argument]; }

    /// @throws Refusal DISP_E_TYPEMISMATCH if it is missing or cannot be converted
    base::Text text(UINT argument) const;
    base::Text text(UINT argument, base::TextView ifMissing) const;
    std::int32_t number(UINT argument) const;
    std::int32_t number(UINT argument, std::int32_t ifMissing) const;

private:
    const DISPPARAMS& parameters_;
};

}  // namespace comdouble
