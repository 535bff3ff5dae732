#pragma once

#include <cstdint>

#include "base/RuntimeError.h"

namespace ado::embedded {

/// The failures that ADO itself raises, with its numbers and German texts. What the engine raises carries the
/// provider's numbers already and passes through unchanged.
enum class AdoErrorNumber : std::int32_t {
    InvalidArgument = 3001,
    NoCurrentRecord = 3021,
    FeatureNotAvailable = 3251,
    ItemNotFound = 3265,
    ObjectClosed = 3704,
    ObjectOpen = 3705,
    ProviderNotFound = 3706,
    InvalidConnection = 3709,
};

base::RuntimeError adoError(AdoErrorNumber number);

/// -2147217843: the file knows no such user.
base::RuntimeError invalidUser();

/// -2147217911: a record set whose rows cannot be changed.
base::RuntimeError readOnlyObject();

}  // namespace ado::embedded
