#include <gtest/gtest.h>
#include <map>
#include <set>

#include "ado/com/Factory.h"
#include "ado/embedded/Factory.h"
#include "win32/EngineChoice.h"
#include "win32/SystemHeaders.h"

namespace {

using win32::Engine;

class Machine final : public win32::EngineProbe {
public:
    std::map<base::Text, base::Text, std::less<>> registered{{u"Microsoft.Jet.OLEDB.4.0", u"C:\\jet.dll"},
                                                             {u"ADODB.Connection", u"ado.dll"},
                                                             {u"ADODB.Recordset", u"ado.dll"}};
    std::set<base::Text> files{u"C:\\jet.dll", u"ado.dll"};

    std::optional<base::Text> moduleOf(base::TextView progId) const override {
        const auto found = registered.find(progId);
        return found == registered.end() ? std::nullopt : std::optional(found->second);
    }
    bool moduleExists(const base::Text& file) const override { return files.contains(file); }
};

TEST(EngineChoice, IsAdoOnlyIfAllOfItIsInstalled) {
    EXPECT_EQ(decideEngine(Machine()), Engine::Ado);
    for (const auto& [progId, file] : Machine().registered) {
        Machine unregistered;
        unregistered.registered.erase(progId);
        EXPECT_EQ(decideEngine(unregistered), Engine::Embedded) << base::toUtf8(progId);
        Machine removed;
        removed.files.erase(file);
        EXPECT_EQ(decideEngine(removed), Engine::Embedded) << base::toUtf8(progId);
    }
}

// A class that every system has; the provider is looked up in the same way.
TEST(EngineChoice, ReadsTheRegisteredModuleOfAClass) {
    const win32::SystemEngineProbe probe;
    const auto module = probe.moduleOf(u"ADODB.Connection");
    ASSERT_TRUE(module);
    EXPECT_TRUE(module->ends_with(u"msado15.dll")) << base::toUtf8(*module);
    EXPECT_TRUE(probe.moduleExists(*module));
    EXPECT_FALSE(probe.moduleExists(*module + u"x"));
    EXPECT_FALSE(probe.moduleExists(u""));
    EXPECT_TRUE(probe.moduleExists(u"kernel32.dll"));
    EXPECT_FALSE(probe.moduleOf(u"Microsoft.Jet.OLEDB.3.9"));
}

TEST(EngineChoice, AgreesWithWhatIsInstalledHere) {
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    const auto connections = win32::chooseEngine();
    const bool isAdo = decideEngine(win32::SystemEngineProbe()) == Engine::Ado;
    EXPECT_EQ(dynamic_cast<ado::com::Factory*>(connections.get()) != nullptr, isAdo);
    EXPECT_EQ(dynamic_cast<ado::embedded::Factory*>(connections.get()) != nullptr, !isAdo);
    CoUninitialize();
}

}  // namespace
