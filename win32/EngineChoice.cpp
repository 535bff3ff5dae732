#include "win32/EngineChoice.h"

#include "ado/com/Factory.h"
#include "ado/embedded/Factory.h"
#include "win32/SystemHeaders.h"
#include "win32/WideText.h"

namespace win32 {

namespace {

constexpr base::TextView kProvider = u"Microsoft.Jet.OLEDB.4.0";
constexpr base::TextView kConnection = u"ADODB.Connection";
constexpr base::TextView kRecordset = u"ADODB.Recordset";

std::optional<CLSID> classOf(base::TextView progId) {
    CLSID id{};
    if (FAILED(CLSIDFromProgID(toWide(progId).c_str(), &id))) return std::nullopt;
    return id;
}

}  // namespace

std::optional<base::Text> SystemEngineProbe::moduleOf(base::TextView progId) const {
    const auto id = classOf(progId);
    if (!id) return std::nullopt;
    wchar_t name[39];
    StringFromGUID2(*id, name, int{std::size(name)});
    const std::wstring key = std::wstring(L"CLSID\\") + name + L"\\InprocServer32";
    // As this process sees the registry: 32-bit and 64-bit processes see different modules. Variables in the value are
    // expanded.
    wchar_t file[32768];
    DWORD size = sizeof file;
    if (RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), nullptr, RRF_RT_REG_SZ, nullptr, file, &size) != ERROR_SUCCESS)
        return std::nullopt;
    base::Text module = fromWide(file);
    std::erase(module, u'"');
    return module;
}

bool SystemEngineProbe::moduleExists(const base::Text& file) const {
    wchar_t found[1];  // only the returned length matters
    return !file.empty() && SearchPathW(nullptr, toWide(file).c_str(), L".dll", 1, found, nullptr) != 0;
}

Engine decideEngine(const EngineProbe& probe) {
    for (const base::TextView progId : {kProvider, kConnection, kRecordset}) {
        const auto module = probe.moduleOf(progId);
        if (!module || !probe.moduleExists(*module)) return Engine::Embedded;
    }
    return Engine::Ado;
}

std::unique_ptr<ado::ConnectionFactory> chooseEngine() {
    const auto connection = classOf(kConnection);
    const auto recordset = classOf(kRecordset);
    if (connection && recordset && decideEngine(SystemEngineProbe()) == Engine::Ado)
        return std::make_unique<ado::com::Factory>(ado::com::Classes{*connection, *recordset});
    return std::make_unique<ado::embedded::Factory>();
}

}  // namespace win32
