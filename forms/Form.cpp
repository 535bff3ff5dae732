#include "forms/Form.h"

#include <algorithm>
#include <utility>

#include "forms/CommandButton.h"
#include "forms/Control.h"
#include "forms/FormHost.h"

namespace forms {
namespace {

constexpr std::int16_t kTabKey = 9;
constexpr std::int16_t kEnterKey = 13;
constexpr std::int16_t kEscapeKey = 27;

}  // namespace

Form::Form(FormHost& host, base::Text name, base::Text caption)
    : host_(host), name_(std::move(name)), caption_(std::move(caption)) {}

Form::~Form() = default;

void Form::setCaption(base::TextView caption) {
    if (caption == caption_) return;
    caption_ = caption;
    if (peer_ != nullptr) peer_->show(Property::Caption);
}

std::vector<Control*> Form::tabOrder() const {
    std::vector<Control*> order;
    std::copy_if(controls_.begin(), controls_.end(), std::back_inserter(order),
                 [](const Control* control) { return control->canTakeFocus(); });
    std::stable_sort(order.begin(), order.end(),
                     [](const Control* a, const Control* b) { return a->TabIndex() < b->TabIndex(); });
    return order;
}

void Form::setClientSize(int widthTwips, int heightTwips) {
    clientWidthTwips_ = widthTwips;
    clientHeightTwips_ = heightTwips;
}

void Form::Load() {
    if (loaded_) return;
    loaded_ = true;
    host_.load(*this);
    if (onLoad) onLoad();
}

void Form::Show(Modality modality) {
    Load();
    if (activeControl_ == nullptr) focusFirstTabStop();
    if (modality == Modality::Modal) {
        host_.showModal(*this);
    } else {
        host_.show(*this);
    }
}

void Form::Unload() {
    if (!loaded_) return;
    loaded_ = false;
    if (onUnload) onUnload();
    activeControl_ = nullptr;
    host_.unloaded(*this);
}

void Form::userPressedKey(std::int16_t keyCode, std::int16_t shift) {
    const bool isDialogKey = keyCode == kTabKey || (keyCode == kEnterKey && defaultButton_ != nullptr) ||
                             (keyCode == kEscapeKey && cancelButton_ != nullptr);
    if (keyPreview_ && !isBlocked() && !isDialogKey && onKeyDown) onKeyDown(keyCode, shift);
}

CommandButton* Form::enterButton() const {
    auto* focused = activeControl_ != nullptr ? as<CommandButton>(*activeControl_) : nullptr;
    return focused != nullptr ? focused : defaultButton_;
}

void Form::userPressedEnter() {
    if (CommandButton* button = enterButton()) button->userClicked();
}

void Form::userPressedEscape() {
    if (cancelButton_ != nullptr) cancelButton_->userClicked();
}

void Form::userClosed() {
    if (!isBlocked()) Unload();
}

bool Form::isBlocked() const {
    return host_.hasOpenBox();
}

void Form::focusFirstTabStop() {
    const auto order = tabOrder();
    const auto first =
        std::find_if(order.begin(), order.end(), [](const Control* control) { return control->Enabled(); });
    setActiveControl(first != order.end() ? *first : nullptr);
}

void Form::setActiveControl(Control* control) {
    noteActiveControl(control);
    if (control != nullptr && control->peer_ != nullptr) control->peer_->takeFocus();
}

void Form::noteActiveControl(Control* control) {
    const Control* before = enterButton();
    activeControl_ = control;
    const Control* after = enterButton();
    if (before == after) return;
    if (before != nullptr) before->tellPeer(Property::EnterButton);
    if (after != nullptr) after->tellPeer(Property::EnterButton);
}

}  // namespace forms
