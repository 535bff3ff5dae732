#pragma once

#include <gmock/gmock.h>
#include <map>

#include "accounts/AccountTable.h"
#include "tests/support/Tool.h"

namespace tolv {

inline base::Text nameOf(const test::FakeDatabase::Row& row) {
    return std::get<base::Text>(row[1]);
}

/// Writes to the log which properties of a control the window sets, in order.
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
    void note(const std::string& what) { log_.push_back(name_ + " " + what); }

    std::string name_;
    test::Log& log_;
};

/// The account window on fakes, all of its commands included.
class AccountWindow : public testing::Test {
protected:
    static constexpr forms::Color kGrey = 0x00C0C0C0;

    void addAccounts() {
        tool.database.add(17, u"Zorn", u"D:\\Z\\", base::Text(u"geändert"), true);
        tool.database.add(3, u"Abel", u"C:\\A", base::Text(accountTable::kStoredInitialPassword));
        tool.database.add(8, u"Meier", u"C:\\M");
    }
    void expectCleanSaveButton() {
        EXPECT_EQ(window.cmdSpeichern.Caption(), u"Speichern");
        EXPECT_EQ(window.cmdSpeichern.BackColor(), 0x8000000FU);
        EXPECT_FALSE(window.cmdSpeichern.FontBold());
        EXPECT_FALSE(window.cmdSpeichern.Enabled());
    }
    void expectAccount(base::TextView name, base::TextView path, std::int16_t update) {
        EXPECT_EQ(window.txtUserNameDexo.Text(), name);
        EXPECT_EQ(window.txtPathGlobal.Text(), path);
        EXPECT_EQ(window.chbProgrammupdate.Value(), update);
        EXPECT_EQ(window.lvwBenKto.SelectedItem()->Text(), name) << "selection and fields never part";
        for (forms::TextBox* box : {&window.txtUserNameDexo, &window.txtPathGlobal}) {
            EXPECT_TRUE(box->Enabled());
            EXPECT_EQ(box->BackColor(), 0x80000005U);
        }
        EXPECT_TRUE(window.chbProgrammupdate.Enabled());
        expectCleanSaveButton();
    }
    void expectEmpty() {
        for (forms::TextBox* box : {&window.txtUserNameDexo, &window.txtPathGlobal}) {
            EXPECT_FALSE(box->Enabled());
            EXPECT_EQ(box->BackColor(), kGrey);
            EXPECT_EQ(box->Text(), u"");
        }
        EXPECT_FALSE(window.chbProgrammupdate.Enabled());
        EXPECT_EQ(window.chbProgrammupdate.Value(), forms::CheckBox::kUnchecked);
        EXPECT_FALSE(window.cmdGlobal.Enabled());
        expectCleanSaveButton();
    }
    int loads() const {
        return static_cast<int>(std::count_if(tool.log.begin(), tool.log.end(), [](const std::string& entry) {
            return entry.find("WHERE BenKTO_ID") != std::string::npos;
        }));
    }

    test::Tool tool;
    frmBenKto& window = tool.window();
};

}  // namespace tolv
