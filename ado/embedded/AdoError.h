#pragma once

#include <cstdint>

#include "base/RuntimeError.h"

namespace ado::embedded {

/// The errors that ADO itself raises, with its numbers and German texts. Errors of the engine already have the
/// provider's numbers and pass through unchanged.
enum class AdoErrorNumber : std::int32_t {
    InvalidArgument = 3001,
    NoCurrentRecord = 3021,
    IllegalOperation = 3219,
    FeatureNotAvailable = 3251,
    ItemNotFound = 3265,
    ObjectClosed = 3704,
    ObjectOpen = 3705,
    ProviderNotFound = 3706,
    InvalidConnection = 3709,
};

base::RuntimeError adoError(AdoErrorNumber number);

/// -2147217843: the file has no such user.
base::RuntimeError invalidUser();

}  // namespace ado::embedded
