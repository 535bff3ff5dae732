#include "jet/tree/IndexNodeCache.h"

#include <cassert>
#include <utility>

namespace jet {
namespace {

constexpr std::size_t kMostNodes = 4096;

}  // namespace

IndexNode& IndexNodeCache::at(PageNumber page) {
    const auto known = nodes_.find(page);
    if (known != nodes_.end()) return known->second;
    return put(page, IndexNode(IndexPage(store_.page(page), definitionPage_)));
}

IndexNode& IndexNodeCache::put(PageNumber page, IndexNode node) {
    return nodes_.insert_or_assign(page, std::move(node)).first->second;
}

void IndexNodeCache::move(PageNumber from, PageNumber to) {
    auto node = nodes_.extract(from);
    assert(!node.empty());
    node.key() = to;
    nodes_.erase(to);
    nodes_.insert(std::move(node));
}

void IndexNodeCache::forgetIfMany() {
    if (nodes_.size() > kMostNodes) nodes_.clear();
}

}  // namespace jet
