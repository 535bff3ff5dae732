#pragma once

#include <cstddef>
#include <unordered_map>

#include "jet/page/PageStore.h"
#include "jet/tree/IndexNode.h"

namespace jet {

/// The nodes of one index tree in memory, so that a transaction checks a page and takes it apart once, not with every
/// entry. Whoever changes a node writes it to its page too: between two changes of the tree the pages are as the nodes,
/// and all nodes may be forgotten.
class IndexNodes {
public:
    /// @param store  must outlive this; nobody else changes the pages of the tree meanwhile
    IndexNodes(PageStore& store, PageNumber definitionPage) : store_(store), definitionPage_(definitionPage) {}

    /// The reference stays valid until the page is dropped, or until forgetIfMany().
    /// @throws RuntimeError (damage) if the page is not a sound index page of the table
    IndexNode& at(PageNumber page);

    IndexNode& put(PageNumber page, IndexNode node);

    /// The node lies on another page from now on.
    void move(PageNumber from, PageNumber to);
    void drop(PageNumber page) { nodes_.erase(page); }

    /// Keeps the memory for them below some 20 MB, however large the tree.
    void forgetIfMany();

private:
    PageStore& store_;
    PageNumber definitionPage_;
    std::unordered_map<PageNumber, IndexNode> nodes_;
};

}  // namespace jet
