#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "jet/transaction/Database.h"

/// Other programs that have the same file open: further processes of this test program, each in a role
/// (OtherProcess.cpp).
namespace test {

/// What the roles write: one number, stored on several pages, so that half a write shows.
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
    /// @param folder  the folder of the file, and of the markers
    OtherProcess(const std::filesystem::path& folder, const std::string& role, int number = 0);
    ~OtherProcess();
    OtherProcess(OtherProcess&& other) noexcept;
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;
    OtherProcess& operator=(OtherProcess&&) = delete;

    /// @return the exit code of the process
    int wait();

    static constexpr int kDone = 0;
    static constexpr int kFault = 1;  ///< the message is on standard error
    static constexpr int kDied = 9;   ///< when it had to

private:
    std::intptr_t id_ = 0;
};

std::filesystem::path fileIn(const std::filesystem::path& folder);

/// A role that holds something makes the marker "ready" when it does. As soon as the marker "go" exists, it ends
/// without releasing anything.
void setMarker(const std::filesystem::path& folder, const std::string& name);
void waitForMarker(const std::filesystem::path& folder, const std::string& name);

}  // namespace test
