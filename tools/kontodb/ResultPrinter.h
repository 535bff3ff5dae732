#pragma once

#include <optional>
#include <string>

#include "jet/sql/ResultSet.h"
#include "tools/kontodb/Console.h"

namespace kontodb {

/// How the rows of a result are written.
struct ResultStyle {
    enum class Form {
        Lines,    ///< values separated by tabs, escaped
        Aligned,  ///< aligned columns, for a screen
        Csv,      ///< RFC 4180: lines end with CR LF, a text is quoted where it must be, an empty one always
        Json,     ///< an object a line
    };
    Form form = Form::Lines;
    bool hasHeader = true;            ///< not of Json
    std::optional<std::string> null;  ///< printed for null; otherwise \N, in Csv nothing; not of Json
    std::string separator = ",";      ///< Csv: one character
    bool hasMark = false;             ///< Csv: begins with the byte order mark
    bool hasDecimalComma = false;     ///< Csv
};

/// @throws base::RuntimeError (damage) when the rows before the damaged one are printed
void printResult(const jet::sql::ResultSet& rows, const ResultStyle& style, Console& console);

}  // namespace kontodb
