#pragma once

#include <filesystem>
#include <random>
#include <string>
#include <system_error>

namespace test {

/// A folder for one test only, because the same test may run twice at the same time. Deleted by the destructor.
class TempFolder {
public:
    TempFolder() { std::filesystem::create_directory(path); }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    std::filesystem::path operator/(const std::filesystem::path& name) const { return path / name; }

    const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("tolv-test-" + std::to_string(std::random_device{}()));
};

}  // namespace test
