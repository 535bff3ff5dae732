#pragma once

#include <exception>
#include <optional>

#include "base/RuntimeError.h"
#include "tests/comdouble/AdoDouble.h"

namespace comdouble {

/// A call that is answered with a bare result, without an exception record.
class Refusal : public std::exception {
public:
    explicit Refusal(HRESULT result, std::optional<UINT> argument = {}) noexcept
        : result_(result), argument_(argument) {}

    HRESULT result() const noexcept { return result_; }
    /// The argument that is to blame, in the order in which they are written, from 0.
    std::optional<UINT> argument() const noexcept { return argument_; }
    const char* what() const noexcept override { return "refused by the double"; }

private:
    HRESULT result_;
    std::optional<UINT> argument_;
};

/// A failure that a test has asked for.
class Ordered : public std::exception {
public:
    explicit Ordered(const Raised& raised) noexcept : raised_(&raised) {}

    /// Belongs to the faults of the registration.
    const Raised& raised() const noexcept { return *raised_; }
    const char* what() const noexcept override { return "fault ordered by a test"; }

private:
    const Raised* raised_;
};

/// What the classes themselves raise, with the German texts of their documentation.
enum class AdoNumber : std::int32_t {
    InvalidArgument = 3001,
    NoCurrentRecord = 3021,
    IllegalOperation = 3219,
    FeatureNotAvailable = 3251,
    ItemNotFound = 3265,
    DataConversion = 3421,
    ObjectClosed = 3704,
    ObjectOpen = 3705,
    ProviderNotFound = 3706,
    InvalidConnection = 3709,
};

base::RuntimeError adoError(AdoNumber number);

/// What the provider raises that the engine in jet/ does not know.
base::RuntimeError unknownUser();
base::RuntimeError rowChanged();
base::RuntimeError rowDeleted();
base::RuntimeError outOfReach();
base::RuntimeError dataSourceNotFound();

}  // namespace comdouble
