#pragma once

#include <memory>
#include <optional>

#include "ado/Ado.h"
#include "base/Text.h"

namespace win32 {

enum class Engine { Embedded, Ado };

/// What the machine has of the classes that the way through ADO needs.
class EngineProbe {
public:
    virtual ~EngineProbe() = default;
    /// File of the class's module; nothing if the class is not registered for a process such as this one.
    virtual std::optional<base::Text> moduleOf(base::TextView progId) const = 0;
    virtual bool moduleExists(const base::Text& file) const = 0;
};

class SystemEngineProbe final : public EngineProbe {
public:
    std::optional<base::Text> moduleOf(base::TextView progId) const override;
    /// @param file  without a folder: anywhere where the system looks for modules
    bool moduleExists(const base::Text& file) const override;
};

/// ADO where its classes and the Jet provider are registered and their modules lie there; else the embedded engine.
/// Nothing is loaded for it: a module that is there and fails to load is an error later on, never the other engine,
/// for two engines would lock one file in two ways.
Engine decideEngine(const EngineProbe& probe);

/// Decides which engine answers the tool's database calls, once, at the start: the one place that knows. There is no
/// setting for it.
std::unique_ptr<ado::ConnectionFactory> chooseEngine();

}  // namespace win32
