#include <cstddef>
#include <cstdint>

#include "tests/fuzz/ReadEverything.h"
#include "tests/fuzz/Seeds.h"

/// Entry of the coverage-guided fuzzer: tests/fuzz/run.sh builds and starts it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    jet::readEverything(base::Bytes(data, data + size), jet::kSeedPassword);
    return 0;
}
