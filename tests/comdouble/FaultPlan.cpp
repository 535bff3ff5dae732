#include "tests/comdouble/FaultPlan.h"

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace comdouble {

namespace {

VARIANT noValue() {
    VARIANT error{};
    V_VT(&error) = VT_ERROR;
    V_ERROR(&error) = E_FAIL;
    return error;
}

void add(Faults& faults, const std::vector<std::string>& words) {
    const std::string& kind = words.at(0);
    const base::Text name = base::fromUtf8(words.at(1));
    if (kind == "call")
        faults.calls[name] = {.scode = static_cast<SCODE>(std::stol(words.at(2))),
                              .description = base::fromUtf8(words.at(3))};
    else if (kind == "statements")
        faults.statementsUntilDeath = std::stoi(words[1]);
    else if (kind == "missing-field")
        faults.missingField = name;
    else if (kind == "no-value")
        faults.oddValues[name] = noValue;
    else
        throw std::invalid_argument(kind);
}

}  // namespace

Faults faultsOf(const std::filesystem::path& plan) {
    Faults faults;
    std::ifstream file(plan, std::ios::binary);
    for (std::string line; std::getline(file, line);) {
        std::istringstream stream(line);
        std::vector<std::string> words;
        for (std::string word; std::getline(stream, word, '\t');)
            words.push_back(word);
        add(faults, words);
    }
    return faults;
}

}  // namespace comdouble
