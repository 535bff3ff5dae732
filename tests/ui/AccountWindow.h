#pragma once

#include <gmock/gmock.h>
#include <map>

#include "accounts/AccountTable.h"
#include "tests/support/Tool.h"

namespace tolv {

const base::Text kInitial(accountTable::kStoredInitialPassword);
const std::string kNotice =
    "\r\n\r\nMNwelKOP\r\n\r\nDer Anwender wird beim ersten Login aufgefordert dieses zu ändern.";

/// Writes to the log which properties of a control the window sets, in order: "txtPathGlobal text enabled".
class Recorder : public forms::ListViewPeer {
public:
    Recorder(base::TextView name, test::Log& log) : name_(base::toUtf8(name)), log_(log) {}
    void show(forms::Property property) override {
        static const std::map<forms::Property, const char*> names = {
            {forms::Property::Enabled, "enabled"}, {forms::Property::Text, "text"},
            {forms::Property::Caption, "caption"}, {forms::Property::BackColor, "colour"},
            {forms::Property::FontBold, "bold"},   {forms::Property::Value, "value"},
            {forms::Property::ListIndex, "index"}, {forms::Property::Selection, "selection"}};
        if (const auto found = names.find(property); found != names.end()) note(found->second);
    }
    void takeFocus() override { note("focus"); }
    void refresh() override { note("refresh"); }
    forms::NativeHandle handle() const override { return 77; }
    void ensureVisible(std::size_t place) override { note("visible " + std::to_string(place)); }

private:
    void note(const std::string& what) {
        const bool isSame = !log_.empty() && log_.back().starts_with(name_ + " ");
        isSame ? log_.back().append(" " + what) : log_.emplace_back(name_ + " " + what);
    }

    std::string name_;
    test::Log& log_;
};

/// The account window on fakes, all of its commands included.
class AccountWindow : public testing::Test {
protected:
    void addAccounts() {
        tool.database.add(17, u"Zorn", u"D:\\Z\\", base::Text(u"geändert"), true);
        tool.database.add(3, u"Abel", u"C:\\A", kInitial);
        tool.database.add(8, u"Meier", u"C:\\M");
    }
    void expectSaveButton(base::TextView caption, forms::Color color, bool isOn) {
        EXPECT_EQ(window.cmdSpeichern.Caption(), caption);
        EXPECT_EQ(window.cmdSpeichern.BackColor(), color);
        EXPECT_EQ(window.cmdSpeichern.FontBold(), isOn);
        EXPECT_EQ(window.cmdSpeichern.Enabled(), isOn);
    }
    void expectCleanSaveButton() { expectSaveButton(u"Speichern", 0x8000000F, false); }
    void expectRedSaveButton() { expectSaveButton(u"Speichern (Strg+S)", 0x000000FF, true); }
    void expectFields(base::TextView name, base::TextView path, std::int16_t update, bool areEnabled = true) {
        EXPECT_EQ(window.txtUserNameDexo.Text(), name);
        EXPECT_EQ(window.txtPathGlobal.Text(), path);
        EXPECT_EQ(window.chbProgrammupdate.Value(), update);
        for (forms::TextBox* box : {&window.txtUserNameDexo, &window.txtPathGlobal}) {
            EXPECT_EQ(box->Enabled(), areEnabled);
            EXPECT_EQ(box->BackColor(), areEnabled ? 0x80000005U : 0x00C0C0C0U);
        }
        EXPECT_EQ(window.chbProgrammupdate.Enabled(), areEnabled);
    }
    void expectAccount(base::TextView name, base::TextView path, std::int16_t update) {
        EXPECT_EQ(window.lvwBenKto.SelectedItem()->Text(), name) << "selection and fields show the same account";
        expectFields(name, path, update);
        expectCleanSaveButton();
    }
    /// The texts of the message boxes since the log was cleared.
    test::Log boxes() const {
        test::Log texts;
        std::copy_if(tool.log.begin(), tool.log.end(), std::back_inserter(texts),
                     [](const std::string& entry) { return entry.starts_with("box "); });
        return texts;
    }

    test::Tool tool;
    frmBenKto& window = tool.window();
};

}  // namespace tolv
