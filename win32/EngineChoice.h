#pragma once

#include <memory>
#include <optional>

#include "ado/Ado.h"
#include "base/Text.h"

namespace win32 {

enum class Engine { Embedded, Ado };

/// What this machine has installed of the classes that are needed for ADO.
class EngineProbe {
public:
    virtual ~EngineProbe() = default;
    /// The file of the module of the class; nothing if the class is not registered for a process like this one.
    virtual std::optional<base::Text> moduleOf(base::TextView progId) const = 0;
    virtual bool moduleExists(const base::Text& file) const = 0;
};

class SystemEngineProbe final : public EngineProbe {
public:
    std::optional<base::Text> moduleOf(base::TextView progId) const override;
    /// @param file  if it has no folder, all folders are searched in which the system looks for modules
    bool moduleExists(const base::Text& file) const override;
};

/// ADO if its classes and the Jet provider are registered and their modules exist; otherwise the embedded engine.
/// Nothing is loaded to find out. If a module exists but fails to load, that is an error later and never leads to the
/// other engine, because the two engines would lock one file in two ways.
Engine decideEngine(const EngineProbe& probe);

/// Decides, once at the start, which engine answers the tool's database calls. Nothing else knows which one it is.
/// There is no setting for it.
std::unique_ptr<ado::ConnectionFactory> chooseEngine();

}  // namespace win32
