/// The engine of the tool that the journeys go through a second time: reached through COM, with the double's classes
/// in the place of the system's. Linked before the library that would choose an engine.

#include <cstdlib>

#include "ado/com/Factory.h"
#include "tests/comdouble/AdoDouble.h"
#include "win32/EngineChoice.h"

namespace {

constexpr int kSomethingLeft = 70;

/// What the tool gets. With the end of its last user nothing may be held any more; the exit code tells.
class FactoryOverDouble final : public ado::ConnectionFactory {
public:
    FactoryOverDouble() = default;
    FactoryOverDouble(const FactoryOverDouble&) = delete;
    FactoryOverDouble& operator=(const FactoryOverDouble&) = delete;
    ~FactoryOverDouble() override {
        if (comdouble::liveObjects() != 0 || comdouble::recordsNotFilledIn() != 0 || comdouble::breaches() != 0)
            std::_Exit(kSomethingLeft);
    }

    std::unique_ptr<ado::Connection> createConnection() override { return factory_.createConnection(); }
    std::unique_ptr<ado::Recordset> createRecordset() override { return factory_.createRecordset(); }

private:
    comdouble::Registration registration_;
    ado::com::Factory factory_{
        ado::com::Classes{comdouble::Registration::connectionClass(), comdouble::Registration::recordsetClass()}};
};

}  // namespace

std::unique_ptr<ado::ConnectionFactory> win32::chooseEngine() {
    return std::make_unique<FactoryOverDouble>();
}
