#pragma once

#include <memory>
#include <string>

#include "base/Text.h"
#include "base/Value.h"
#include "jet/check/Checker.h"
#include "jet/transaction/Database.h"
#include "tests/support/FaultyStorage.h"

namespace test {

/// Who has written the file. What other programs leave behind is only a note; in a file that only this engine has
/// written it is a fault.
enum class Writers { OnlyWe, Others };

/// The faults that the checker finds in a file, one on each line; empty if the file is sound.
inline std::string faultsIn(jet::PageSource& source, Writers writers = Writers::OnlyWe) {
    const jet::CheckResult result = jet::checkDatabase(source, std::uint64_t{source.pageCount()} * jet::kPageSize);
    std::string faults;
    for (const jet::Finding& finding : result.findings.kept())
        if (writers == Writers::OnlyWe || finding.kind == jet::Finding::Kind::Fault)
            faults += base::toUtf8(finding.line()) + "\n";
    return faults;
}

inline std::string faultsIn(const base::Bytes& file, base::TextView password = {}, Writers writers = Writers::OnlyWe) {
    jet::Database database = jet::Database::open(Machine(file).storage(), password);
    auto operation = database.beginRead();
    return faultsIn(operation, writers);
}

}  // namespace test
