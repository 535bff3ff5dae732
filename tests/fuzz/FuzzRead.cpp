#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>

#include "tests/fuzz/ReadEverything.h"
#include "tests/fuzz/Seeds.h"

// Entry points for the coverage-guided fuzzer, which tests/fuzz/run.sh builds and starts.

/// Writes the seeds to the folder in which run.sh makes the fuzzer look for them.
extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
    const std::filesystem::path folder = "seeds";
    for (const jet::Seed& seed : jet::seeds()) {
        std::ofstream file(folder / std::filesystem::path(seed.name).filename(), std::ios::binary);
        for (const std::uint8_t byte : seed.file)
            file.put(static_cast<char>(byte));
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    jet::readEverything(base::Bytes(data, data + size), jet::kSeedPassword);
    return 0;
}
