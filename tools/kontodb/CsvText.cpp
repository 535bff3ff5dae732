#include "tools/kontodb/CsvText.h"

#include <algorithm>
#include <string>

#include "jet/Errors.h"

namespace kontodb {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

base::Text decode(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF"))
        throw jet::failure(u"Die Datei ist in UTF-16 gespeichert. Speichern Sie sie als CSV UTF-8.");
    if (bytes.starts_with(kUtf8Mark)) bytes.remove_prefix(kUtf8Mark.size());
    base::Text text = base::fromUtf8(bytes);
    return base::toUtf8(text) == bytes ? text : base::fromWindows1252(bytes);
}

/// The separator that is most frequent in the first record, outside quotes.
char16_t separatorOf(base::TextView text) {
    constexpr base::TextView kSeparators = u";,\t";
    std::size_t counts[kSeparators.size()] = {};
    bool isQuoted = false;
    for (const char16_t unit : text) {
        if (unit == u'"') isQuoted = !isQuoted;
        if (isQuoted) continue;
        if (unit == u'\n' || unit == u'\r') break;
        if (const std::size_t kind = kSeparators.find(unit); kind != base::TextView::npos) ++counts[kind];
    }
    return kSeparators[static_cast<std::size_t>(std::ranges::max_element(counts) - std::ranges::begin(counts))];
}

class CsvReader {
public:
    explicit CsvReader(base::TextView text) : text_(text), separator_(separatorOf(text)) {}

    std::vector<CsvRecord> run() {
        std::vector<CsvRecord> records;
        while (at_ < text_.size()) {
            CsvRecord record{line_, {}};
            do
                record.fields.push_back(field());
            while (skip(separator_));
            endLine();
            if (record.fields.size() > 1 || !record.fields.front().empty()) records.push_back(std::move(record));
        }
        return records;
    }

private:
    bool atLineEnd() const { return at_ == text_.size() || text_[at_] == u'\n' || text_[at_] == u'\r'; }

    bool skip(char16_t unit) {
        if (at_ == text_.size() || text_[at_] != unit) return false;
        ++at_;
        return true;
    }

    void endLine() {
        skip(u'\r');
        skip(u'\n');
        ++line_;
    }

    base::Text field() {
        if (skip(u'"')) return quotedField();
        const std::size_t begin = at_;
        while (!atLineEnd() && text_[at_] != separator_)
            ++at_;
        return base::Text(text_.substr(begin, at_ - begin));
    }

    /// After the opening quote.
    base::Text quotedField() {
        const std::size_t firstLine = line_;
        base::Text field;
        for (; at_ < text_.size(); ++at_) {
            const char16_t unit = text_[at_];
            if (unit == u'"' && (++at_ == text_.size() || text_[at_] != u'"')) {
                if (!atLineEnd() && text_[at_] != separator_)
                    fail(line_, u"nach einem Anführungszeichen geht es weiter");
                return field;
            }
            if (unit == u'\n') ++line_;
            field += unit;
        }
        fail(firstLine, u"ein Anführungszeichen wird nicht geschlossen");
    }

    [[noreturn]] static void fail(std::size_t line, base::TextView why) {
        throw jet::failure(u"Zeile " + base::decimal(line) + u": " + base::Text(why) +
                           u". Ein Anführungszeichen im Text wird verdoppelt.");
    }

    base::TextView text_;
    char16_t separator_;
    std::size_t at_ = 0;
    std::size_t line_ = 1;
};

}  // namespace

std::vector<CsvRecord> readCsv(std::string_view bytes) {
    return CsvReader(decode(bytes)).run();
}

}  // namespace kontodb
