#include <functional>
#include <gmock/gmock.h>
#include <optional>

#include "base/RuntimeError.h"
#include "forms/CheckBox.h"
#include "forms/ComboBox.h"
#include "forms/CommandButton.h"
#include "forms/Form.h"
#include "forms/Label.h"
#include "forms/ListView.h"
#include "forms/OptionButton.h"
#include "forms/TextBox.h"
#include "tests/support/Expect.h"
#include "tests/support/FakeHost.h"

namespace forms {
namespace {

using test::errorOf;
using testing::ElementsAre;
using testing::IsEmpty;

struct RecordingPeer : test::SilentPeer {
    RecordingPeer(test::Log& log, std::function<std::string()> state) : log_(log), state_(std::move(state)) {}
    void show(Property) override { log_.push_back("peer " + state_()); }
    void takeFocus() override { log_.push_back(state_() + " takes the focus"); }

    test::Log& log_;
    std::function<std::string()> state_;
};

/// One control of each kind that has a window; the Tab order differs from the order of definition.
struct SampleForm : Form {
    explicit SampleForm(FormHost& formHost) : Form(formHost, u"sample", u"Sample") {
        std::int16_t tabIndex = 0;
        for (Control* control : std::initializer_list<Control*>{&list, &label, &text, &check, &combo, &option,
                                                                &otherOption, &button, &otherButton})
            control->setTabIndex(tabIndex++);
        combo.AddItem(u"a");
        combo.AddItem(u"b");
    }
    TextBox text{*this, u"text"};
    CheckBox check{*this, u"check", u"Check"};
    CommandButton button{*this, u"button", u"Button"};
    ComboBox combo{*this, u"combo"};
    OptionButton option{*this, u"option", u"Option"};
    Label label{*this, u"label", u"Label"};
    OptionButton otherOption{*this, u"otherOption", u"Other"};
    CommandButton otherButton{*this, u"otherButton", u"Other"};
    ListView list{*this, u"list"};
};

class ControlTest : public testing::Test {
protected:
    test::Log log;
    test::FakeHost host{log};
    SampleForm form{host};
};

TEST_F(ControlTest, aSetterStoresThenTellsThePeerThenRaisesTheEventAndDoesNothingForAnEqualValue) {
    const auto expectSteps = [this](auto& control, auto get, auto set, const auto& value, bool raisesEvent) {
        const auto state = [&] { return std::invoke(get, control) == value ? "new value" : "old value"; };
        const auto event = [&] { log.push_back(std::string("event ") + state()); };
        form.text.onChange = event;
        form.check.onClick = form.combo.onClick = form.option.onClick = form.button.onClick = event;
        RecordingPeer peer(log, state);
        control.attachPeer(peer);
        std::invoke(set, control, value);
        std::invoke(set, control, value);
        control.detachPeer();
        EXPECT_EQ(log, raisesEvent ? test::Log({"peer new value", "event new value"}) : test::Log{"peer new value"});
        log.clear();
    };
    for (Control* control : std::initializer_list<Control*>{&form.text, &form.check, &form.combo, &form.option})
        control->setEnabled(false);  // being disabled stops only the user
    expectSteps(form.text, &TextBox::Text, &TextBox::setText, base::Text(u"x"), true);
    expectSteps(form.check, &CheckBox::Value, &CheckBox::setValue, CheckBox::kChecked, true);
    expectSteps(form.combo, &ComboBox::ListIndex, &ComboBox::setListIndex, 1, true);
    expectSteps(form.option, &OptionButton::Value, &OptionButton::setValue, true, true);
    expectSteps(form.text, &TextBox::BackColor, &TextBox::setBackColor, Color{5}, false);
    expectSteps(form.combo, &ComboBox::BackColor, &ComboBox::setBackColor, Color{5}, false);
    expectSteps(form.button, &CommandButton::BackColor, &CommandButton::setBackColor, Color{5}, false);
    expectSteps(form.button, &CommandButton::Caption, &CommandButton::setCaption, base::Text(u"y"), false);
    expectSteps(form.button, &CommandButton::FontBold, &CommandButton::setFontBold, true, false);
    expectSteps(form.button, &CommandButton::Enabled, &CommandButton::setEnabled, false, false);
}

TEST_F(ControlTest, theUsersInputRaisesTheEventOnceUnlessTheControlIsDisabledOrABoxIsOpen) {
    const auto event = [this] { log.push_back("event"); };
    form.text.onChange = event;
    form.check.onClick = form.combo.onClick = form.option.onClick = form.button.onClick = event;
    RecordingPeer peer(log, [] { return "shows the model again"; });
    struct Case {
        Control& control;
        std::function<void()> act;
    };
    for (const Case& c : {Case{form.text, [&] { form.text.userTyped(u"x"); }},
                          {form.check, [&] { form.check.userClicked(); }},
                          {form.combo, [&] { form.combo.userSelectedEntry(0); }},
                          {form.option, [&] { form.option.userClicked(); }},
                          {form.button, [&] { form.button.userClicked(); }}}) {
        SCOPED_TRACE(test::shown(c.control.Name()));
        for (const bool isBoxOpen : {false, true}) {
            c.control.setEnabled(isBoxOpen);
            std::optional<FormHost::OpenBox> box;
            if (isBoxOpen) box.emplace(host);
            c.control.attachPeer(peer);
            c.act();
            EXPECT_EQ(log, &c.control == &form.button ? test::Log{} : test::Log{"peer shows the model again"});
            c.control.detachPeer();
            log.clear();
        }
        c.control.setEnabled(true);
        c.act();
        EXPECT_THAT(log, ElementsAre("event"));
        log.clear();
    }
    form.text.attachPeer(peer);
    form.text.userTyped(u"y");
    form.text.userTyped(u"y");
    EXPECT_THAT(log, ElementsAre("event")) << "the peer is not told what the user typed into it";

    form.check.userClicked();
    EXPECT_EQ(form.check.Value(), CheckBox::kUnchecked) << "a second click unchecks the box";
    EXPECT_EQ(form.combo.List(0), u"a");
    EXPECT_EQ(errorOf([&] { form.combo.List(2); }), 5);
    form.otherOption.userClicked();
    EXPECT_FALSE(form.option.Value());
    EXPECT_TRUE(form.otherOption.Value());
    form.text.setEnabled(false);
    form.text.userFocused();
    EXPECT_EQ(form.ActiveControl(), nullptr);
}

TEST_F(ControlTest, disablingTheFocusedControlFirstMovesTheFocusToTheFirstTabStop) {
    form.Show(Form::Modality::Modeless);
    EXPECT_TRUE(form.list.hasFocus()) << "a shown form focuses its first tab stop";
    form.button.SetFocus();
    log.clear();

    RecordingPeer listPeer(log, [] { return "list"; });
    form.list.attachPeer(listPeer);
    RecordingPeer peer(log, [] { return "button"; });
    form.button.attachPeer(peer);
    form.button.setEnabled(false);
    EXPECT_THAT(log, ElementsAre("peer button", "list takes the focus", "peer button"))
        << "it is no longer the default button; the focus moves; it is disabled";

    form.list.setEnabled(false);
    EXPECT_TRUE(form.text.hasFocus()) << "labels and disabled controls are skipped";
    EXPECT_EQ(errorOf([&] { form.button.SetFocus(); }), 5);
    EXPECT_EQ(errorOf([&] { form.label.SetFocus(); }), 5);
    EXPECT_TRUE(form.text.hasFocus());
}

TEST_F(ControlTest, enterAndEscapePressTheirButtons) {
    form.button.onClick = [&] { log.push_back("button"); };
    form.otherButton.onClick = [&] { log.push_back("other"); };
    form.text.SetFocus();

    form.userPressedEnter();
    form.userPressedEscape();
    EXPECT_THAT(log, IsEmpty()) << "no default button, no cancel button";

    form.setDefaultButton(form.button);
    form.setCancelButton(form.otherButton);
    form.userPressedEnter();
    form.userPressedEscape();
    form.otherButton.SetFocus();
    form.userPressedEnter();
    EXPECT_THAT(log, ElementsAre("button", "other", "other")) << "Enter presses the button that has the focus";

    const auto look = [&](const CommandButton& shown, const std::string& name) {
        return name + (form.enterButton() == &shown ? " looks pressed by Enter" : " looks plain");
    };
    RecordingPeer peer(log, [&] { return look(form.button, "button"); });
    RecordingPeer otherPeer(log, [&] { return look(form.otherButton, "other"); });
    log.clear();
    form.button.attachPeer(peer);
    form.otherButton.attachPeer(otherPeer);
    form.text.userFocused();
    form.check.userFocused();
    form.button.userFocused();
    EXPECT_THAT(log, ElementsAre("peer other looks plain", "peer button looks pressed by Enter"));
    form.otherButton.userFocused();
    EXPECT_THAT(log, testing::SizeIs(4));
    form.button.detachPeer();
    form.otherButton.detachPeer();

    log.clear();
    form.button.setEnabled(false);
    form.otherButton.setEnabled(false);
    form.userPressedEnter();
    form.userPressedEscape();
    EXPECT_THAT(log, IsEmpty());
}

TEST_F(ControlTest, theFormSeesKeysFirstExceptThoseThatTheDialogHandles) {
    form.onKeyDown = [&](std::int16_t key, std::int16_t shift) {
        log.push_back(std::to_string(key) + "/" + std::to_string(shift));
    };
    form.userPressedKey(83, Form::kCtrlMask);
    EXPECT_THAT(log, IsEmpty()) << "without KeyPreview";
    form.setKeyPreview(true);
    for (const auto key : std::initializer_list<std::int16_t>{9, 13, 27, 83})
        form.userPressedKey(key, Form::kCtrlMask);
    EXPECT_THAT(log, ElementsAre("13/2", "27/2", "83/2"));
    log.clear();
    form.setDefaultButton(form.button);
    form.setCancelButton(form.button);
    for (const auto key : std::initializer_list<std::int16_t>{9, 13, 27})
        form.userPressedKey(key, 0);
    EXPECT_THAT(log, IsEmpty());
}

TEST_F(ControlTest, aFormIsLoadedBeforeItIsShownAndUnloadsOnce) {
    form.onLoad = [&] { log.push_back("onLoad"); };
    form.onUnload = [&] { log.push_back("onUnload"); };
    host.modalScript = [](Form& shown) {
        shown.Unload();
        shown.Unload();
    };
    form.Load();
    form.Show(Form::Modality::Modal);
    EXPECT_THAT(log, ElementsAre("load sample", "onLoad", "showModal sample", "onUnload", "unloaded sample"));
    EXPECT_FALSE(form.isLoaded());
}

}  // namespace
}  // namespace forms
