#pragma once

#include <filesystem>
#include <random>
#include <string>
#include <system_error>

namespace test {

/// A folder of one test alone, since the same test may run elsewhere at the same time. Gone with its end.
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
