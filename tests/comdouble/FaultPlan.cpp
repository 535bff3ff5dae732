#include "tests/comdouble/FaultPlan.h"

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace comdouble {

namespace {

Raised raisedBy(const std::vector<std::string>& words) {
    Raised raised;
    raised.scode = static_cast<SCODE>(std::stol(words.at(2)));
    raised.description = base::fromUtf8(words.at(3));
    return raised;
}

/// An error code, which is not a value; or the text.
VARIANT oddValue(const std::optional<std::string>& text) {
    VARIANT value{};
    V_VT(&value) = text ? VT_BSTR : VT_ERROR;
    V_ERROR(&value) = E_FAIL;
    if (text) V_BSTR(&value) = SysAllocString(reinterpret_cast<const OLECHAR*>(base::fromUtf8(*text).c_str()));
    return value;
}

void add(Faults& faults, const std::vector<std::string>& words) {
    const std::string& kind = words.at(0);
    const base::Text name = base::fromUtf8(words.at(1));
    if (kind == "call")
        faults.calls[name] = raisedBy(words);
    else if (kind == "property")
        faults.properties[name] = raisedBy(words);
    else if (kind == "statements")
        faults.statementsUntilDeath = std::stoi(words[1]);
    else if (kind == "missing-rows")
        faults.missingRows = std::stoi(words[1]);
    else if (kind == "missing-field")
        faults.missingField = name;
    else if (kind == "no-value")
        faults.oddValues[name] = [] { return oddValue(std::nullopt); };
    else if (kind == "text")
        faults.oddValues[name] = [text = words.at(2)] { return oddValue(text); };
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
