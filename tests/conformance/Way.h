#pragma once

#include <memory>

#include "ado/Ado.h"

namespace conformance {

/// One of the ways in which the tool reaches its database. Each test program is linked with one of them, and all
/// programs have the same tests: what holds on one way must hold on the other.
class Way {
public:
    virtual ~Way() = default;
    virtual ado::ConnectionFactory& connections() = 0;
    /// Fails the test if something is still held after everything made through the factory has been released.
    virtual void expectNothingLeft() = 0;
};

std::unique_ptr<Way> makeWay();

}  // namespace conformance
