#pragma once

#include <functional>
#include <memory>

#include "ado/Ado.h"

namespace conformance {

/// One of the ways in which the tool reaches its database: our engine, or ADO through COM. Each test program is linked
/// with one of them; all programs have the same tests.
struct Backend {
    std::shared_ptr<void> surroundings;  ///< what must outlive the factory
    std::unique_ptr<ado::ConnectionFactory> connections;
    /// Fails the test if something is still held after everything made through the factory has been released.
    std::function<void()> expectNothingLeft;
};

Backend makeBackend();

}  // namespace conformance
