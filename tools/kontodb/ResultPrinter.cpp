#include "tools/kontodb/ResultPrinter.h"

#include <algorithm>
#include <vector>

#include "base/RuntimeError.h"
#include "tools/kontodb/AlignedColumns.h"
#include "tools/kontodb/PrintBuffer.h"
#include "tools/kontodb/ValueText.h"

namespace kontodb {
namespace {

bool isNumber(jet::ColumnType type) {
    using enum jet::ColumnType;
    constexpr jet::ColumnType kOthers[] = {DateTime, Binary, Text, Ole, Memo, Guid, Block};
    return std::ranges::find(kOthers, type) == std::end(kOthers);
}

class Printer {
public:
    Printer(const jet::sql::ResultSet& rows, const ResultStyle& style, Console& console)
        : rows_(rows), style_(style), lines_(console) {}

    void print() {
        try {
            switch (style_.form) {
                case ResultStyle::Form::Lines:
                    putLines();
                    break;
                case ResultStyle::Form::Aligned:
                    putAligned();
                    break;
                case ResultStyle::Form::Csv:
                    putCsv();
                    break;
                case ResultStyle::Form::Json:
                    putJson();
                    break;
            }
        } catch (const base::RuntimeError&) {
            lines_.dropLine();
            lines_.flush();
            throw;
        }
        lines_.flush();
    }

private:
    void putLines() {
        for (std::size_t column = 0; style_.hasHeader && column < rows_.columnCount(); ++column) {
            if (column > 0) lines_.put('\t');
            appendPlainText(value_, rows_.column(column).name);
            putValue();
        }
        if (style_.hasHeader) lines_.endLine();
        for (std::size_t row = 0; row < rows_.rowCount(); ++row) {
            const jet::sql::ResultRow fields = rows_.row(row);
            for (std::size_t column = 0; column < rows_.columnCount(); ++column) {
                if (column > 0) lines_.put('\t');
                putField(fields, column);
            }
            lines_.endLine();
        }
    }

    void putField(const jet::sql::ResultRow& fields, std::size_t column) {
        if (const auto units = fields.latinText(column)) {
            lines_.endAt(writePlainLatin(lines_.room(kMostLatinBytes * units->size()), *units));
        } else {
            appendValue(fields.value(column));
            putValue();
        }
    }

    void appendValue(const base::Value& value) {
        if (style_.null && base::isNull(value))
            value_ += *style_.null;
        else
            appendPlain(value_, value);
    }

    /// Measures as far as the values can be read; the damaged one is met again when it is printed.
    AlignedColumns measure() {
        AlignedColumns columns(rows_.columnCount());
        for (std::size_t column = 0; style_.hasHeader && column < rows_.columnCount(); ++column)
            columns.measure(column, shownName(column));
        try {
            for (std::size_t row = 0; row < rows_.rowCount(); ++row) {
                for (std::size_t column = 0; column < rows_.columnCount(); ++column)
                    columns.measure(column, shownValue(row, column));
            }
        } catch (const base::RuntimeError&) {
            // What is printed comes to the same end.
        }
        return columns;
    }

    std::string shownName(std::size_t column) const { return withoutControls(base::toUtf8(rows_.column(column).name)); }

    std::string shownValue(std::size_t row, std::size_t column) {
        const base::Value value = rows_.value(row, column);
        if (const auto* const text = std::get_if<base::Text>(&value)) return withoutControls(base::toUtf8(*text));
        value_.clear();
        appendValue(value);
        return value_;
    }

    void putAligned() {
        const AlignedColumns columns = measure();
        const auto putCell = [&](std::size_t column, const std::string& cell) {
            columns.put(lines_, column, cell, isNumber(rows_.column(column).type));
        };
        if (style_.hasHeader) {
            for (std::size_t column = 0; column < rows_.columnCount(); ++column)
                putCell(column, shownName(column));
            lines_.endLine();
            columns.putRule(lines_);
        }
        for (std::size_t row = 0; row < rows_.rowCount(); ++row) {
            for (std::size_t column = 0; column < rows_.columnCount(); ++column)
                putCell(column, shownValue(row, column));
            lines_.endLine();
        }
        if (!style_.hasHeader) return;
        lines_.put("(" + std::to_string(rows_.rowCount()) + (rows_.rowCount() == 1 ? " Zeile)" : " Zeilen)"));
        lines_.endLine();
    }

    void putCsv() {
        if (style_.hasMark) lines_.put("\xEF\xBB\xBF");
        for (std::size_t column = 0; style_.hasHeader && column < rows_.columnCount(); ++column) {
            if (column > 0) lines_.put(style_.separator);
            putCsvText(base::toUtf8(rows_.column(column).name));
        }
        if (style_.hasHeader) endCsvLine();
        for (std::size_t row = 0; row < rows_.rowCount(); ++row) {
            const jet::sql::ResultRow fields = rows_.row(row);
            for (std::size_t column = 0; column < rows_.columnCount(); ++column) {
                if (column > 0) putSeparator();
                putCsvField(fields, column);
            }
            endCsvLine();
        }
    }

    void putSeparator() {
        if (style_.separator.size() == 1)
            lines_.put(style_.separator.front());
        else
            lines_.put(style_.separator);
    }

    void putCsvField(const jet::sql::ResultRow& fields, std::size_t column) {
        if (const auto units = style_.separator.size() == 1 ? fields.latinText(column) : std::nullopt) {
            char* const room = lines_.room(kMostLatinBytes * units->size() + 2);
            return lines_.endAt(writeCsvLatin(room, *units, style_.separator.front()));
        }
        putCsvValue(fields.value(column));
    }

    void endCsvLine() {
        lines_.put('\r');
        lines_.endLine();
    }

    void putCsvValue(const base::Value& value) {
        if (base::isNull(value)) {
            if (style_.null && !style_.null->empty()) putCsvText(*style_.null);
            return;
        }
        if (const auto* const text = std::get_if<base::Text>(&value)) return putCsvText(base::toUtf8(*text));
        value_.clear();
        appendPlain(value_, value);
        // Spreadsheets take a date for one only so, and a text with T for a text.
        if (std::holds_alternative<base::Date>(value)) std::ranges::replace(value_, 'T', ' ');
        if (style_.hasDecimalComma) std::ranges::replace(value_, '.', ',');
        putCsvText(value_);
        value_.clear();
    }

    void putCsvText(std::string_view text) {
        const char first = style_.separator.front();
        const auto isSpecial = [first](char byte) {
            return byte == '"' || byte == '\r' || byte == '\n' || byte == first;
        };
        const bool isPlain = !text.empty() && std::ranges::none_of(text, isSpecial);
        if (isPlain) return lines_.put(text);
        lines_.put('"');
        for (const char byte : text) {
            if (byte == '"') lines_.put('"');
            lines_.put(byte);
        }
        lines_.put('"');
    }

    void putJson() {
        std::vector<std::string> names(rows_.columnCount());
        for (std::size_t column = 0; column < names.size(); ++column) {
            names[column] = column == 0 ? "{" : ", ";
            appendJsonText(names[column], rows_.column(column).name);
            names[column] += ": ";
        }
        for (std::size_t row = 0; row < rows_.rowCount(); ++row) {
            const jet::sql::ResultRow fields = rows_.row(row);
            for (std::size_t column = 0; column < names.size(); ++column) {
                lines_.put(names[column]);
                appendJson(value_, fields.value(column));
                putValue();
            }
            lines_.put('}');
            lines_.endLine();
        }
    }

    void putValue() {
        lines_.put(value_);
        value_.clear();
    }

    const jet::sql::ResultSet& rows_;
    const ResultStyle& style_;
    PrintBuffer lines_;
    std::string value_;  ///< its room is used again
};

}  // namespace

void printResult(const jet::sql::ResultSet& rows, const ResultStyle& style, Console& console) {
    Printer(rows, style, console).print();
}

}  // namespace kontodb
