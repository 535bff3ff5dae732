#pragma once

#include <filesystem>

#include "ado/com/Factory.h"

namespace systemado {

/// The classes of the system's own ADO.
inline constexpr ado::com::Classes kClasses{{0x514, 0, 0x10, {0x80, 0, 0, 0xAA, 0, 0x6D, 0x2E, 0xA4}},
                                            {0x535, 0, 0x10, {0x80, 0, 0, 0xAA, 0, 0x6D, 0x2E, 0xA4}}};

std::filesystem::path modulePath();

/// Makes the system's ADO callable by name, in the caller's apartment. Wine 8 asks for version 1.0 of its type library,
/// which calls itself 2.8: if a plain call fails, a copy with version 1.0 is offered as long as this lives.
class SystemAdo {
public:
    SystemAdo();
    ~SystemAdo();
    SystemAdo(const SystemAdo&) = delete;
    SystemAdo& operator=(const SystemAdo&) = delete;

private:
    void offerLibrary();

    std::filesystem::path folder_;
    HANDLE context_ = INVALID_HANDLE_VALUE;
    ULONG_PTR cookie_ = 0;
};

}  // namespace systemado
