#include "win32/EngineChoice.h"

#include "ado/embedded/Factory.h"
#include "jet/PageIo.h"

namespace win32 {

std::unique_ptr<ado::ConnectionFactory> chooseEngine() {
    return std::make_unique<ado::embedded::Factory>(
        [](const base::Text& path) { return jet::openFile(path, jet::OpenMode::Read); });
}

}  // namespace win32
