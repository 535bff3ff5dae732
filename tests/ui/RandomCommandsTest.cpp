#include <random>

#include "tests/support/Environment.h"
#include "tests/support/Expect.h"
#include "tests/ui/AccountWindow.h"

namespace tolv {
namespace {

using Answer = platform::MessageBoxes::Answer;

/// Acts as a user, and keeps a simple model of what the window must show and the file must contain.
class RandomCommandsTest : public AccountWindow {
protected:
    struct Account {
        base::Text name, pass, path;
        bool update = false;
    };
    using Numbered = std::pair<std::int32_t, Account>;

    std::map<std::int32_t, Account> file;
    std::vector<Numbered> list;  // as the file was when the list was filled
    std::optional<std::int32_t> selected;
    Account fields;
    bool isNew = false, isChanged = false, canReset = true, canChoose = true;
    int sortColumn = 1;  // the order in which the list is filled
    bool isDescending = false;
    std::int32_t lastId = 0;
    test::Log expectedBoxes;

    void load(std::int32_t id) {
        selected = id;
        fields = file.at(id);
        if (fields.path.ends_with(u'\\')) fields.path.pop_back();
        canReset = fields.pass != kInitial;
        isChanged = false;
    }
    void fill() {
        list.assign(file.begin(), file.end());
        sortBy(1, false);
        sortBy(sortColumn, isDescending);
    }
    void sortBy(int column, bool descending) {
        const auto text = column == 1 ? &Account::name : &Account::path;
        std::ranges::stable_sort(list, [&](const Numbered& a, const Numbered& b) {
            const int order = test::FakeRegional().compare(a.second.*text, b.second.*text);
            return descending ? order > 0 : order < 0;
        });
    }
    void showFirst() {
        fill();
        if (!list.empty()) return load(list.front().first);
        empty();
        canChoose = false;
    }
    void empty() {
        selected.reset();
        fields = {};
        isChanged = false;
    }
    void edit(auto& field, const auto& value) {
        if ((!selected && !isNew) || field == value) return;
        field = value;
        isChanged = true;
    }
    /// @return the control that has the focus afterwards, null if that does not change
    const forms::Control* store() {
        if (!isChanged) return nullptr;
        fields.name = base::Text(base::trimBlanks(fields.name));
        fields.path = base::Text(base::trimBlanks(fields.path));
        if (fields.name.empty()) return notice("Bitte geben Sie den Benutzernamen an."), &window.txtUserNameDexo;
        if (fields.path.empty()) return notice("Bitte geben Sie den Datenbankpfad an."), &window.txtPathGlobal;
        for (const auto& [id, other] : file) {
            if (id != selected && test::FakeRegional().compare(other.name, fields.name) == 0)
                return notice("Es existiert bereits ein Benutzerkonto mit dieser Bezeichnung."), nullptr;
        }
        if (isNew)
            notice("Das Benutzerkonto '" + test::shown(fields.name) +
                   "' wurde mit folgendem Initialpasswwort angelegt:" + kNotice);
        const std::int32_t id = isNew ? ++lastId : *selected;
        fields.pass = isNew ? kInitial : file[id].pass;
        file[id] = fields;
        isNew = false;
        fill();
        load(id);
        return &window.lvwBenKto;
    }
    void notice(const std::string& text) { expectedBoxes.push_back("box " + text + " [OK] information"); }
    bool isConfirmed(const std::string& before, const std::string& after) {
        expectedBoxes.push_back("box " + before + nameInList() + after + " [Yes/No] question");
        return tool.services.messageBoxes.answer == Answer::Yes;
    }
    std::string nameInList() const {
        return test::shown(std::ranges::find(list, *selected, &Numbered::first)->second.name);
    }

    void expectAll() {
        ASSERT_EQ(window.lvwBenKto.rowCount(), static_cast<int>(list.size()));
        for (std::size_t place = 0; place < list.size(); ++place) {
            EXPECT_EQ(window.lvwBenKto.cellAt(place, 0), list[place].second.name);
            EXPECT_EQ(window.lvwBenKto.cellAt(place, 1), list[place].second.path);
        }
        const auto row = window.lvwBenKto.SelectedItem();
        EXPECT_EQ(row ? row->Tag() : base::Value(), selected ? base::Value(*selected) : base::Value());
        expectFields(fields.name, fields.path, fields.update ? 1 : 0, selected || isNew);
        isChanged ? expectRedSaveButton() : expectCleanSaveButton();
        EXPECT_EQ(window.cmbAddNew.Value(), isNew ? 1 : 0);
        EXPECT_EQ(window.cmbResetPWD.Enabled(), canReset);
        EXPECT_EQ(window.cmdGlobal.Enabled(), canChoose);
        EXPECT_EQ(boxes(), expectedBoxes);
        std::vector<test::FakeDatabase::Row> rows;
        for (const auto& [id, account] : file)
            rows.push_back({id, account.name, account.pass, account.path, account.update});
        EXPECT_EQ(tool.database.rows(), rows);
    }

    // Actions of the user, and of another program

    void type() {
        static const std::array<base::Text, 7> names{u"Abel", u"Meier", u"zorn", u" Neu ", u"mEIER", u"", u"  "};
        static const std::array<base::Text, 7> paths{u"C:\\A", u"C:\\A\\", u"D:\\B\\\\", u" c:\\X ", u"\\", u"", u" "};
        const bool isName = random() % 2 == 0;
        const base::Text& text = (isName ? names : paths)[random() % names.size()];
        edit(isName ? fields.name : fields.path, text);
        (isName ? window.txtUserNameDexo : window.txtPathGlobal).userTyped(text);
    }
    void clickUpdate() {
        edit(fields.update, !fields.update);
        window.chbProgrammupdate.userClicked();
    }
    void clickNew() {
        window.cmbAddNew.userClicked();
        isNew = !isNew;
        if (!isNew) return showFirst();
        empty();
        list.clear();
        canReset = false;
        canChoose = true;
    }
    void save() {
        for (const int shift : {0, 1, 3, 6, 7})
            window.userPressedKey(83, static_cast<std::int16_t>(shift));
        window.userPressedKey(115, forms::Form::kCtrlMask);
        expectAll();
        window.cmbAddNew.SetFocus();
        const forms::Control* const focused = store();
        random() % 2 == 0 ? window.cmdSpeichern.userClicked() : window.userPressedKey(83, forms::Form::kCtrlMask);
        EXPECT_EQ(window.ActiveControl(), focused != nullptr ? focused : &window.cmbAddNew);
    }
    void erase() {
        for (int times = random() % 16 == 0 ? 9 : 1; times > 0; --times) {
            if (selected && isConfirmed("Soll das Benutzerkonto '", "' jetzt gelöscht werden?")) {
                file.erase(*selected);
                showFirst();
            }
            window.cmdDel.userClicked();
        }
    }
    void reset() {
        if (selected && canReset && isConfirmed("Soll das Passwort für '", "' jetzt zurückgesetzt werden?")) {
            notice("Das Passwort für '" + nameInList() +
                   "' wurde auf folgendes Initialpasswwort zurückgesetzt:" + kNotice);
            file[*selected].pass = kInitial;
            load(*selected);
        }
        window.cmbResetPWD.userClicked();
    }
    void select() {
        const std::size_t place = random() % 4;
        const bool isSelected = place < list.size() && list[place].first == selected;
        if (place < list.size()) load(list[place].first);
        isSelected ? window.lvwBenKto.userClickedSelectedRow() : window.lvwBenKto.userSelectedRow(place);
    }
    void sort() {
        sortColumn = 1 + static_cast<int>(random() % 2);
        isDescending = !isDescending;
        sortBy(sortColumn, isDescending);
        window.lvwBenKto.userClickedColumn(sortColumn);
        EXPECT_THAT(tool.log, testing::IsEmpty()) << "nothing is read";
    }
    void changeFromOutside() {
        if (file.empty()) return;
        auto& [id, account] = *std::next(file.begin(), static_cast<std::ptrdiff_t>(random() % file.size()));
        account.name = u"Fremd" + base::decimal(random() % 1000000);
        account.pass = std::vector<base::Text>{u"", u"eigenes", kInitial, kInitial + u" "}[random() % 4];
        account.path = u" ";
        tool.database.execute(u"UPDATE Benutzerkonto SET BenKTO_Name = '" + account.name + u"', BenKTO_Pass = '" +
                              account.pass + u"', BenKTO_ServerPath = ' ' WHERE BenKTO_ID = " + base::decimal(id));
    }

    void doAnything() {
        using Work = RandomCommandsTest;
        using Command = void (Work::*)();
        // The first three are chosen more often, so that there are several accounts.
        static constexpr Command kCommands[] = {&Work::type,        &Work::save,  &Work::clickNew,
                                                &Work::sort,        &Work::reset, &Work::changeFromOutside,
                                                &Work::clickUpdate, &Work::erase, &Work::select};
        (this->*kCommands[random() % (random() % 3 == 0 ? 9 : 3)])();
    }

    std::mt19937 random;
};

TEST_F(RandomCommandsTest, leaveWindowAndFileAsInTheModel) {
    const std::uint32_t seed = test::environmentNumber("TOLV_RANDOM_SEED", std::random_device()());
    SCOPED_TRACE("seed " + std::to_string(seed));
    random.seed(seed);
    tool.openAccountWindow();
    showFirst();
    for (std::uint32_t step = 1; step <= test::environmentNumber("TOLV_OPERATIONS", 500) && !HasFailure(); ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        tool.services.messageBoxes.answer = random() % 2 == 0 ? Answer::Yes : Answer::No;
        tool.log.clear();
        expectedBoxes.clear();
        doAnything();
        expectAll();
    }
}

}  // namespace
}  // namespace tolv
