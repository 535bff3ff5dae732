#include "ado/com/Factory.h"
#include "tests/comdouble/Apartment.h"
#include "tests/conformance/Way.h"

namespace conformance {

namespace {

class ComWay final : public Way {
public:
    ado::ConnectionFactory& connections() override { return factory_; }
    void expectNothingLeft() override { apartment_.expectNothingLeft(); }

private:
    comdouble::Apartment apartment_;
    ado::com::Factory factory_{{comdouble::kConnectionClass, comdouble::kRecordsetClass}};
};

}  // namespace

std::unique_ptr<Way> makeWay() {
    return std::make_unique<ComWay>();
}

}  // namespace conformance
