#include "win32/EngineChoice.h"

#include "ado/embedded/Factory.h"

namespace win32 {

std::unique_ptr<ado::ConnectionFactory> chooseEngine() {
    return std::make_unique<ado::embedded::Factory>();
}

}  // namespace win32
