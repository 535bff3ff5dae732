#include "forms/ListItem.h"

#include <utility>

#include "base/RuntimeError.h"
#include "forms/ListView.h"

namespace forms {
namespace {

constexpr std::size_t kKeyCell = 0;
constexpr std::size_t kTextCell = 1;

std::size_t cellOfSubItem(int index) {
    if (index < 1) throw base::runtimeError(base::RuntimeErrorNumber::IndexOutOfBounds);
    return kTextCell + static_cast<std::size_t>(index);
}

}  // namespace

base::TextView ListItem::Text() const {
    return list_->rowOf(*this).texts.cell(kTextCell);
}

void ListItem::setText(base::TextView text) {
    list_->setCell(*this, kTextCell, text);
}

base::TextView ListItem::SubItems(int index) const {
    return list_->rowOf(*this).texts.cell(cellOfSubItem(index));
}

void ListItem::setSubItems(int index, base::TextView text) {
    list_->setCell(*this, cellOfSubItem(index), text);
}

base::TextView ListItem::Key() const {
    return list_->rowOf(*this).texts.cell(kKeyCell);
}

void ListItem::setKey(base::TextView key) {
    list_->setKeyOf(*this, key);
}

const base::Value& ListItem::Tag() const {
    return list_->rowOf(*this).tag;
}

void ListItem::setTag(base::Value tag) {
    list_->rowOf(*this).tag = std::move(tag);
}

int ListItem::Index() const {
    return static_cast<int>(list_->placeOf(*this)) + 1;
}

bool ListItem::Selected() const {
    return list_->SelectedItem() == *this;
}

void ListItem::Select() {
    list_->setSelectedItem(*this);
}

void ListItem::EnsureVisible() {
    list_->ensureVisible(*this);
}

}  // namespace forms
