#include "tests/comdouble/FaultPlan.h"

#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace comdouble {

namespace {

std::vector<std::string> wordsOf(const std::string& line) {
    std::vector<std::string> words(1);
    for (const char unit : line) {
        if (unit == '\t')
            words.emplace_back();
        else
            words.back() += unit;
    }
    return words;
}

Raised raisedBy(const std::vector<std::string>& words) {
    Raised raised;
    raised.scode = static_cast<SCODE>(std::stol(words.at(2)));
    raised.description = base::fromUtf8(words.at(3));
    return raised;
}

VARIANT noValue() {
    VARIANT error{};
    V_VT(&error) = VT_ERROR;
    V_ERROR(&error) = E_FAIL;
    return error;
}

VARIANT textValue(const base::Text& text) {
    VARIANT value{};
    V_VT(&value) = VT_BSTR;
    V_BSTR(&value) = SysAllocString(reinterpret_cast<const OLECHAR*>(text.c_str()));
    return value;
}

void add(Faults& faults, const std::vector<std::string>& words) {
    const std::string& kind = words.at(0);
    const std::string& what = words.at(1);
    const base::Text name = base::fromUtf8(what);
    if (kind == "call")
        faults.calls[name] = raisedBy(words);
    else if (kind == "property")
        faults.properties[name] = raisedBy(words);
    else if (kind == "statements")
        faults.statementsUntilDeath = std::stoi(what);
    else if (kind == "missing-rows")
        faults.missingRows = std::stoi(what);
    else if (kind == "missing-field")
        faults.missingField = name;
    else if (kind == "no-value")
        faults.oddValues[name] = noValue;
    else if (kind == "text")
        faults.oddValues[name] = [text = base::fromUtf8(words.at(2))] { return textValue(text); };
    else
        throw std::invalid_argument(kind);
}

}  // namespace

Faults faultsOf(const std::filesystem::path& plan) {
    Faults faults;
    std::ifstream file(plan, std::ios::binary);
    for (std::string line; std::getline(file, line);)
        add(faults, wordsOf(line));
    return faults;
}

}  // namespace comdouble
