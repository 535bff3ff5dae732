#include "ado/embedded/Factory.h"
#include "tests/conformance/Way.h"

namespace conformance {

namespace {

class EmbeddedWay final : public Way {
public:
    ado::ConnectionFactory& connections() override { return factory_; }
    void expectNothingLeft() override {}  // the sanitizers check this

private:
    ado::embedded::Factory factory_;
};

}  // namespace

std::unique_ptr<Way> makeWay() {
    return std::make_unique<EmbeddedWay>();
}

}  // namespace conformance
