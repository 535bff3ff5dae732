#pragma once

#include <cstdint>

#include "base/RuntimeError.h"
#include "jet/Errors.h"

namespace ado::embedded {

/// The errors that ADO itself raises, with its numbers and German texts. Errors of the engine already have the
/// provider's numbers and pass through; only what refuses a change through a record set gets others.
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

/// The provider's error for a change through a record set; a statement's has another number for the same reason.
base::RuntimeError recordsetError(const jet::WriteRefused& refused);

/// -2147217843: the file has no such user.
base::RuntimeError invalidUser();

}  // namespace ado::embedded
