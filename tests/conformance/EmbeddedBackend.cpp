#include "ado/embedded/Factory.h"
#include "tests/conformance/Backend.h"

conformance::Backend conformance::makeBackend() {
    return {nullptr, std::make_unique<ado::embedded::Factory>(), [] {}};  // the sanitizers find leaks
}
