#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "base/ByteView.h"
#include "base/RuntimeError.h"
#include "base/Text.h"
#include "jet/Errors.h"
#include "jet/RowPointer.h"

/// The findings of the checker, in a list of limited length.
namespace jet {

struct Finding {
    enum class Kind {
        Fault,  ///< a reader may lose or misread a row, or a writer may break the file
        Note,   ///< known leftovers of other writers
    };
    Kind kind = Kind::Fault;
    base::Text where;  ///< "Tabelle 'Benutzerkonto', Index 'PrimaryKey', Seite 5, Zeile 3"
    base::Text what;   ///< a German sentence: what was found, and what was expected

    base::Text line() const;
};

/// The place of a finding; empty parts are left out.
struct Place {
    base::Text table;
    base::Text index;
    base::Text column;
    std::optional<PageNumber> page;
    std::optional<std::uint8_t> slot;

    static Place ofTable(base::Text name);
    Place withIndex(base::Text name) const;
    Place withColumn(base::Text name) const;
    Place onPage(PageNumber number) const;
    Place atRow(RowPointer row) const;
    base::Text text() const;
};

class Findings {
public:
    /// The number of findings of each kind that are kept. The rest is only counted.
    static constexpr std::size_t kMaxKept = 1000;

    void fault(const Place& place, base::Text what) { add(Finding::Kind::Fault, place.text(), std::move(what)); }
    void note(const Place& place, base::Text what) { add(Finding::Kind::Note, place.text(), std::move(what)); }

    /// Runs a step that reads the file. Damage that ends the step becomes a fault. Other errors are passed on.
    /// @return whether the step ended without damage
    template <typename Step>
    bool guard(const Place& place, Step&& step) {
        try {
            onPage(place.page.value_or(0), std::forward<Step>(step));
            return true;
        } catch (const base::RuntimeError& error) {
            addDamage(place, error);
            return false;
        }
    }

    const std::vector<Finding>& kept() const { return kept_; }
    std::size_t faultCount() const { return faultCount_; }
    std::size_t noteCount() const { return noteCount_; }

private:
    void add(Finding::Kind kind, base::Text where, base::Text what);
    void addDamage(const Place& place, const base::RuntimeError& error);

    std::vector<Finding> kept_;
    std::size_t faultCount_ = 0;
    std::size_t noteCount_ = 0;
};

/// Runs a step and ignores damage that is reported elsewhere.
template <typename Step>
void passingOverDamage(Step&& step) {
    Findings unheeded;
    unheeded.guard({}, std::forward<Step>(step));
}

/// A count in a message.
inline base::Text countText(std::size_t count) {
    return base::decimal(count);
}

/// "Seite 5, Zeile 3"
base::Text rowText(RowPointer row);

}  // namespace jet
