#pragma once

#include "base/Value.h"
#include "tests/comdouble/AdoDouble.h"

namespace comdouble {

/// A copy that the caller frees. @throws std::bad_alloc
BSTR toBstr(base::TextView text);

/// The text with all its units, zeros too; null is empty.
base::Text fromBstr(BSTR text);

/// The same of a variant; empty where that holds no text.
base::Text textOf(const VARIANT& variant);

/// As fields deliver their values; the caller clears the variant. @throws Refusal E_NOTIMPL for GUIDs and decimals
VARIANT toVariant(const base::Value& value);

/// What is assigned to a field.
/// @throws base::RuntimeError 3421 for objects, arrays other than of bytes, what is no value, and kinds of numbers that
/// nobody assigns here
base::Value fromVariant(const VARIANT& variant);

/// Variants of single kinds.
VARIANT numberVariant(std::int32_t number);
VARIANT booleanVariant(bool value);
/// DISP_E_PARAMNOTFOUND is an argument that was left out.
VARIANT errorVariant(SCODE error);
VARIANT textVariant(base::TextView text);
/// Counts that are as wide as a pointer.
VARIANT countVariant(std::int64_t count);
/// Takes over one reference.
VARIANT objectVariant(IDispatch* object);

}  // namespace comdouble
