#include "ado/com/Factory.h"
#include "tests/comdouble/Apartment.h"
#include "tests/conformance/Backend.h"

conformance::Backend conformance::makeBackend() {
    const auto apartment = std::make_shared<comdouble::Apartment>();
    const ado::com::Classes classes{comdouble::kConnectionClass, comdouble::kRecordsetClass};
    return {apartment, std::make_unique<ado::com::Factory>(classes), [apartment] { apartment->expectNothingLeft(); }};
}
