#pragma once

#include <cstddef>
#include <unordered_map>

#include "jet/page/PageStore.h"
#include "jet/tree/IndexNode.h"

namespace jet {

/// Keeps the nodes of one index tree in memory, so that a transaction checks and decodes each page once and not for
/// every entry. A caller that changes a node must also write it to its page. So between two changes of the tree pages
/// and nodes agree, and all nodes may be forgotten.
class IndexNodeCache {
public:
    /// @param store  must outlive this; no other code may change the pages of the tree meanwhile
    IndexNodeCache(PageStore& store, PageNumber definitionPage) : store_(store), definitionPage_(definitionPage) {}

    /// The reference is valid until the page is dropped, or until forgetIfMany().
    /// @throws RuntimeError (damage) if the page is not a sound index page of the table
    IndexNode& at(PageNumber page);

    IndexNode& put(PageNumber page, IndexNode node);

    /// Moves the node to another page.
    void move(PageNumber from, PageNumber to);
    void drop(PageNumber page) { nodes_.erase(page); }

    /// Keeps the memory for nodes below about 20 MB, however large the tree is.
    void forgetIfMany();

private:
    PageStore& store_;
    PageNumber definitionPage_;
    std::unordered_map<PageNumber, IndexNode> nodes_;
};

}  // namespace jet
