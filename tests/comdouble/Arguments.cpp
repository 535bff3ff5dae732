#include "tests/comdouble/Arguments.h"

#include "tests/comdouble/Refusal.h"
#include "tests/comdouble/Variants.h"

namespace comdouble {

namespace {

/// A variant of the wanted type, cleared at the end.
class Converted {
public:
    Converted(VARIANT given, VARTYPE type, UINT argument) {
        VariantInit(&variant_);
        const HRESULT result = VariantChangeType(&variant_, &given, 0, type);
        if (FAILED(result)) throw Refusal(result, argument);
    }
    Converted(const Converted&) = delete;
    Converted& operator=(const Converted&) = delete;
    ~Converted() { VariantClear(&variant_); }
    const VARIANT& get() const { return variant_; }

private:
    VARIANT variant_;
};

}  // namespace

bool Arguments::isMissing(UINT argument) const {
    if (argument >= count()) return true;
    const VARIANT given = asGiven(argument);
    return V_VT(&given) == VT_ERROR && V_ERROR(&given) == DISP_E_PARAMNOTFOUND;
}

VARIANT Arguments::at(UINT argument) const {
    if (argument >= count()) return errorVariant(DISP_E_PARAMNOTFOUND);
    const VARIANT& given = asGiven(argument);
    if ((V_VT(&given) & VT_BYREF) != 0) throw Refusal(E_NOTIMPL, argument);
    return given;
}

base::Text Arguments::text(UINT argument) const {
    return fromBstr(V_BSTR(&Converted(at(argument), VT_BSTR, argument).get()));
}

base::Text Arguments::text(UINT argument, base::TextView ifMissing) const {
    return isMissing(argument) ? base::Text(ifMissing) : text(argument);
}

std::int32_t Arguments::number(UINT argument) const {
    return V_I4(&Converted(at(argument), VT_I4, argument).get());
}

std::int32_t Arguments::number(UINT argument, std::int32_t ifMissing) const {
    return isMissing(argument) ? ifMissing : number(argument);
}

}  // namespace comdouble
