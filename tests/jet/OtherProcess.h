#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "jet/transaction/Database.h"

/// Other programs that have the same file open: this test program once more, playing a role (OtherProcess.cpp).
namespace test {

/// What the roles write: one number that lies on several pages, so that half a write shows.
namespace counter {

/// A file whose number is 0.
base::Bytes file();

/// Adds 1, as one transaction.
void add(jet::Database& database);

/// @throws std::runtime_error if the pages disagree
std::uint32_t read(jet::Database& database);

}  // namespace counter

class OtherProcess {
public:
    /// @param folder  where the file lies, and where the markers are made
    OtherProcess(const std::filesystem::path& folder, const std::string& role, int number = 0);
    ~OtherProcess();
    OtherProcess(OtherProcess&& other) noexcept;
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;
    OtherProcess& operator=(OtherProcess&&) = delete;

    /// @return its exit code
    int wait();

    static constexpr int kDone = 0;
    static constexpr int kFault = 1;  ///< has said what on standard error
    static constexpr int kDied = 9;   ///< where it was told to

private:
    std::intptr_t id_ = 0;
};

std::filesystem::path fileIn(const std::filesystem::path& folder);

/// A role that holds something says that it does by the marker "ready", and ends without giving anything back as soon
/// as the marker "go" lies there.
void setMarker(const std::filesystem::path& folder, const std::string& name);
void waitForMarker(const std::filesystem::path& folder, const std::string& name);

}  // namespace test
