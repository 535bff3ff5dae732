#include "jet/check/IndexCheck.h"

#include <algorithm>
#include <array>

#include "jet/check/ExpectedKeys.h"
#include "jet/tree/IndexPage.h"

namespace jet {
namespace {

class TreeCheck {
public:
    TreeCheck(const CheckContext& context, const IndexDefinition& index, ExpectedKeys& keys, Place place,
              PageOwners::Owner owner)
        : context_(context),
          findings_(context.findings),
          index_(index),
          keys_(keys),
          place_(std::move(place)),
          owner_(owner) {}

    void run(PageNumber definitionPage) {
        definitionPage_ = definitionPage;
        visit(index_.rootPage, 0);
        for (const Chain& chain : chains_) {
            if (!chain.isKnown || chain.last == 0 || chain.next == 0) continue;
            findings_.fault(place_.onPage(chain.last), u"Hinter der letzten Indexseite soll noch Seite " +
                                                           base::decimal(chain.next) + u" kommen.");
        }
        checkMap();
    }

    bool isWhole() const { return isWhole_; }

private:
    /// The pages of one level that the walk has met.
    struct Chain {
        PageNumber last = 0;
        PageNumber next = 0;  ///< the link of the last page
        bool isKnown = true;  ///< no page has been left out since the last page
    };

    /// @return whether everything below the page could be read
    bool visit(PageNumber number, std::size_t depth) {
        if (depth >= kMaxIndexHeight) {
            findings_.fault(place_.onPage(number), u"Der Index hat zu viele Ebenen.");
            return lose();
        }
        if (!context_.owners.claim(number, owner_, place_)) return lose();
        pages_.push_back(number);
        std::optional<IndexPage> page;
        const bool isSound = findings_.guard(place_.onPage(number),
                                             [&] { page.emplace(context_.source.page(number), definitionPage_); });
        if (!isSound) return lose();
        if (!page->isLeaf()) return visitChildren(*page, depth);
        visitLeaf(*page, depth);
        return true;
    }

    bool lose() {
        isWhole_ = false;
        for (Chain& chain : chains_)
            chain.isKnown = false;
        return false;
    }

    bool visitChildren(const IndexPage& node, std::size_t depth) {
        if (node.size() == 0 && node.tail() == 0) {
            findings_.fault(place_.onPage(node.number()), u"Ein Knoten des Indexes hat keine Kinder.");
            return lose();
        }
        checkLinks(node, chains_[depth]);
        bool isWhole = true;
        for (std::size_t i = 0; i < node.size(); ++i) {
            const bool isSound = visit(node.child(i), depth + 1);
            if (isSound) checkSeparator(node, i);
            node.copyEntry(i, last_);
            isWhole = isWhole && isSound;
        }
        if (node.tail() != 0) isWhole = visit(node.tail(), depth + 1) && isWhole;
        return isWhole;
    }

    /// The entry of a node should be the last leaf entry below its child. With a greater one, searches still find
    /// everything.
    void checkSeparator(const IndexPage& node, std::size_t i) {
        const base::Bytes separator = node.entry(i);
        if (separator == last_) return;
        const Place at = place_.onPage(node.number());
        base::Text what = u"Der Eintrag " + countText(i) + u" des Knotens ist nicht der letzte Eintrag unter Seite " +
                          base::decimal(node.child(i));
        if (std::is_lt(compareEntries(separator, last_)))
            findings_.fault(at, what + u", sondern kleiner.");
        else
            findings_.note(at, what + u", sondern größer.");
    }

    void visitLeaf(const IndexPage& leaf, std::size_t depth) {
        const Place at = place_.onPage(leaf.number());
        checkLinks(leaf, chains_.back());
        if (context_.source.page(leaf.number()).bytes.u32(kIndexTailOffset) != 0)
            findings_.fault(at, u"Eine Indexseite der untersten Ebene nennt ein Kind.");
        if (leaf.size() == 0 && depth > 0) findings_.note(at, u"Die Indexseite hat keine Einträge.");
        for (std::size_t i = 0; i < leaf.size(); ++i) {
            leaf.copyEntry(i, entry_);
            ++context_.counts.entries;
            checkEntry(at);
            last_.swap(entry_);
        }
    }

    /// The links of nodes may be missing: not every writer sets them.
    void checkLinks(const IndexPage& page, Chain& chain) {
        const auto differs = [&](PageNumber link, PageNumber neighbour) {
            return link != neighbour && (link != 0 || page.isLeaf());
        };
        if (chain.isKnown) {
            if (differs(page.previous(), chain.last)) {
                findings_.fault(place_.onPage(page.number()), u"Die Seite davor ist " + base::decimal(chain.last) +
                                                                  u", genannt wird " + base::decimal(page.previous()) +
                                                                  u".");
            }
            if (chain.last != 0 && differs(chain.next, page.number())) {
                findings_.fault(place_.onPage(chain.last), u"Die Seite dahinter ist " + base::decimal(page.number()) +
                                                               u", genannt wird " + base::decimal(chain.next) + u".");
            }
        }
        chain = {page.number(), page.next(), true};
    }

    void checkEntry(const Place& at) {
        const auto key = std::span(entry_).first(entry_.size() - kIndexRowBytes);
        const RowPointer row = rowOfEntry(entry_);
        if (!last_.empty() && std::is_gteq(compareEntries(last_, entry_))) {
            findings_.fault(at, u"Der Eintrag zu " + rowText(row) + u" ist nicht größer als die vor ihm.");
        } else if (index_.isUnique() && last_.size() == entry_.size() &&
                   std::equal(key.begin(), key.end(), last_.begin()) && !keys_.hasNull(row)) {
            findings_.fault(at, u"Der Index verlangt eindeutige Werte; " + rowText(row) + u" hat den gleichen wie " +
                                    rowText(rowOfEntry(last_)) + u".");
        }
        keys_.meet(row, key, at);
    }

    void checkMap() {
        const auto map = context_.owners.readMap(index_.usageMap, place_);
        if (!map) return;
        std::sort(pages_.begin(), pages_.end());
        for (const PageNumber page : pages_) {
            if (!map->contains(page))
                findings_.fault(place_.onPage(page), u"Die Seite des Indexes fehlt in seiner Karte.");
        }
        std::vector<PageNumber> strangers;
        std::set_difference(map->pages.begin(), map->pages.end(), pages_.begin(), pages_.end(),
                            std::back_inserter(strangers));
        if (strangers.empty()) return;
        // If the tree was not fully read, the pages below the damaged one also belong to the index.
        if (isWhole_) {
            findings_.fault(place_.onPage(strangers[0]), u"Die Karte des Indexes nennt " + countText(strangers.size()) +
                                                             u" Seiten, die nicht in seinem Baum sind.");
        }
        for (const PageNumber page : strangers)
            context_.owners.claim(page, owner_, place_);
    }

    CheckContext context_;
    Findings& findings_;
    const IndexDefinition& index_;
    ExpectedKeys& keys_;
    Place place_;
    PageOwners::Owner owner_;
    PageNumber definitionPage_ = 0;
    std::vector<PageNumber> pages_;
    base::Bytes entry_;
    base::Bytes last_;                               ///< all later entries are greater
    std::array<Chain, kMaxIndexHeight + 1> chains_;  ///< of nodes, by their depth; the last one is of all leaves
    bool isWhole_ = true;
};

}  // namespace

void checkIndex(const CheckContext& context, const TableRows& rows, std::size_t block, const Place& tablePlace) {
    const TableDefinition& definition = rows.table().definition();
    const IndexDefinition& index = definition.indexes[block];
    const base::Text name = index.name.empty() ? u"Nummer " + countText(block) : index.name;
    const Place place = tablePlace.withIndex(name);
    ++context.counts.indexes;
    for (const IndexColumn& part : index.columns) {
        const ColumnType type = definition.columnOf(part).type;
        if (type != ColumnType::Ole && type != ColumnType::Block) continue;
        context.findings.fault(place.onPage(definition.page), u"Eine Spalte des Indexes kann keinen Schlüssel haben.");
        return;
    }
    ExpectedKeys keys(rows, index, context.findings, place);
    const auto owner = context.owners.addOwner(u"zum Index '" + name + u"' der Tabelle '" + tablePlace.table + u"'");
    TreeCheck tree(context, index, keys, place, owner);
    tree.run(definition.page);
    keys.reportUnmet(tree.isWhole());
}

}  // namespace jet
