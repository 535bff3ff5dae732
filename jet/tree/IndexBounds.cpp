#include "jet/tree/IndexBounds.h"

#include "jet/Errors.h"
#include "jet/tree/IndexPage.h"

namespace jet {

void IndexBounds::requireChildren(PageNumber page, std::size_t depth, std::size_t childCount) {
    if (depth >= kMaxIndexHeight) throw tooManyLevels(page);
    if (childCount == 0) throw damaged(page, u"Ein Knoten des Indexes ist leer");
}

void IndexBounds::check(std::span<const std::uint8_t> first, std::span<const std::uint8_t> last,
                        PageNumber page) const {
    const bool isBefore = !after.empty() && std::is_gteq(compareEntries(after, first));
    const bool isBehind = !upTo.empty() && std::is_lt(compareEntries(upTo, last));
    if (isBefore || isBehind) throw outsideBounds(page);
}

base::RuntimeError outsideBounds(PageNumber page) {
    return damaged(page, u"Die Einträge der Indexseite liegen außerhalb der Grenzen, die ihr Knoten setzt");
}

base::RuntimeError tooManyLevels(PageNumber page) {
    return damaged(page, u"Der Index hat zu viele Ebenen");
}

}  // namespace jet
