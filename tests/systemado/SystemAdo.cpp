#include "tests/systemado/SystemAdo.h"

#include <fstream>
#include <gtest/gtest.h>
#include <string>

#include "ado/com/Object.h"
#include "tests/support/Expect.h"

namespace systemado {

namespace {

std::int32_t errorOfAPlainCall() {
    return test::errorOf([] { ado::com::Object(kClasses.connection).get(L"State"); });
}

std::string libraryAsVersion1() {
    const HMODULE module = LoadLibraryExW(modulePath().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    const HRSRC place = FindResourceW(module, MAKEINTRESOURCEW(1), L"TYPELIB");
    std::string bytes(static_cast<const char*>(LockResource(LoadResource(module, place))),
                      SizeofResource(module, place));
    bytes.replace(0x18, 4, "\1\0\0\0", 4);  // major and minor version, 16 bits each
    FreeLibrary(module);
    return bytes;
}

}  // namespace

std::filesystem::path modulePath() {
    wchar_t path[MAX_PATH] = L"";
    ExpandEnvironmentStringsW(L"%CommonProgramFiles%\\System\\ADO\\msado15.dll", path, MAX_PATH);
    return path;
}

SystemAdo::SystemAdo() {
    const std::int32_t error = errorOfAPlainCall();
    if (error == TYPE_E_LIBNOTREGISTERED)
        offerLibrary();
    else
        EXPECT_EQ(error, 0);
}

SystemAdo::~SystemAdo() {
    if (folder_.empty()) return;
    DeactivateActCtx(0, cookie_);
    ReleaseActCtx(context_);
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

void SystemAdo::offerLibrary() {
    folder_ = std::filesystem::temp_directory_path() / ("ado-" + std::to_string(GetCurrentProcessId()));
    std::filesystem::create_directories(folder_);
    std::ofstream(folder_ / "ado.tlb", std::ios::binary) << libraryAsVersion1();
    const auto manifest = folder_ / "ado.manifest";
    std::ofstream(manifest) << R"(<assembly xmlns="urn:schemas-microsoft-com:asm.v1" manifestVersion="1.0">
<file name="ado.tlb"><typelib tlbid="{2A75196C-D9EB-4129-B803-931327F72D5C}" version="1.0" helpdir=""/></file>
</assembly>)";
    ACTCTXW request{};
    request.cbSize = sizeof request;
    request.lpSource = manifest.c_str();
    context_ = CreateActCtxW(&request);
    EXPECT_TRUE(ActivateActCtx(context_, &cookie_));
    EXPECT_EQ(errorOfAPlainCall(), 0);
}

}  // namespace systemado
