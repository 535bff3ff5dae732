#include "jet/check/Findings.h"

namespace jet {
namespace {

/// The longest name that a finding shows. A damaged definition may have much longer ones.
constexpr std::size_t kMaxNameUnits = 64;

void append(base::Text& text, base::TextView label, base::TextView part) {
    if (!text.empty()) text += u", ";
    text += label;
    text += part;
}

void appendName(base::Text& text, base::TextView label, base::TextView name) {
    if (!name.empty()) append(text, label, u"'" + base::Text(name.substr(0, kMaxNameUnits)) + u"'");
}

}  // namespace

base::Text Finding::line() const {
    const base::Text sentence = where.empty() ? what : where + u": " + what;
    return (kind == Kind::Fault ? u"Fehler: " : u"Hinweis: ") + sentence;
}

Place Place::ofTable(base::Text name) {
    Place place;
    place.table = std::move(name);
    return place;
}

Place Place::withIndex(base::Text name) const {
    Place place = *this;
    place.index = std::move(name);
    return place;
}

Place Place::withColumn(base::Text name) const {
    Place place = *this;
    place.column = std::move(name);
    return place;
}

Place Place::onPage(PageNumber number) const {
    Place place = *this;
    place.page = number;
    place.slot.reset();
    return place;
}

Place Place::atRow(RowPointer row) const {
    Place place = onPage(row.page);
    place.slot = row.slot;
    return place;
}

base::Text Place::text() const {
    base::Text text;
    appendName(text, u"Tabelle ", table);
    appendName(text, u"Index ", index);
    appendName(text, u"Spalte ", column);
    if (page) append(text, u"Seite ", base::decimal(*page));
    if (slot) append(text, u"Zeile ", base::decimal(*slot));
    return text;
}

void Findings::add(Finding::Kind kind, base::Text where, base::Text what) {
    std::size_t& count = kind == Finding::Kind::Fault ? faultCount_ : noteCount_;
    if (++count <= kMaxKept) kept_.push_back({kind, std::move(where), std::move(what)});
}

/// The error itself names page and row; only table, index and column are taken from the place.
void Findings::addDamage(const Place& place, const base::RuntimeError& error) {
    const auto damage = damageOf(error);
    if (!damage) throw;  // the error that guard() is handling
    const base::TextView whole = *damage;
    Place known = place;
    known.page.reset();
    known.slot.reset();
    base::Text where = known.text();
    const std::size_t colon = whole.find(u": ");
    append(where, {}, whole.substr(0, colon));
    add(Finding::Kind::Fault, std::move(where), base::Text{whole.substr(colon == base::Text::npos ? 0 : colon + 2)});
}

base::Text rowText(RowPointer row) {
    return u"Seite " + base::decimal(row.page) + u", Zeile " + base::decimal(row.slot);
}

}  // namespace jet
