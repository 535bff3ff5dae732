#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "base/Text.h"

namespace kontodb {

/// A record of a table as text, and the line where it begins, counted from 1.
struct CsvRecord {
    std::size_t line = 0;
    std::vector<base::Text> fields;
};

/// Reads comma-separated values (RFC 4180) as spreadsheets write them: UTF-8 with or without a byte order mark, else
/// Windows-1252; separated by semicolons, commas or tabs, whichever the first record has most of; lines with any
/// ending. Empty lines are skipped.
/// @throws base::RuntimeError that names the line: a quote that is not closed, text after a closing quote; or if the
/// bytes are UTF-16
std::vector<CsvRecord> readCsv(std::string_view bytes);

}  // namespace kontodb
