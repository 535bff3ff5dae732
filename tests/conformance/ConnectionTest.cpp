#include <functional>

#include "tests/conformance/Conformance.h"

namespace conformance {
namespace {

TEST_F(Conformance, AConnectionOpensOnceAndClosesOnce) {
    auto connection = prepare();
    EXPECT_EQ(connection->State(), ado::adStateClosed);
    EXPECT_EQ(connection->Provider(), u"Microsoft.Jet.OLEDB.4.0");
    EXPECT_EQ(connection->Properties().Item(u"data source").Value(), Value(path.u16string()));
    connection->Open(u"", u"", u"", ado::adOptionUnspecified);
    EXPECT_EQ(connection->State(), ado::adStateOpen);
    EXPECT_EQ(errorOf([&] { connection->Open(u"", u"", u"", ado::adOptionUnspecified); }), 3705);
    EXPECT_EQ(errorOf([&] { connection->setProvider(u"Microsoft.Jet.OLEDB.4.0"); }), 3705);
    EXPECT_EQ(errorOf([&] { connection->Properties().Item(u"Data Source").setValue(Text(u"x")); }), 3705);
    EXPECT_EQ(names(*connection), "1 Müller|2 Aal|3 Meier|");
    connection->Close();
    EXPECT_EQ(connection->State(), ado::adStateClosed);
    EXPECT_EQ(errorOf([&] { connection->Close(); }), 3704);
    EXPECT_EQ(errorOf([&] { connection->Execute(u"DELETE FROM Benutzerkonto"); }), 3704);
    EXPECT_EQ(errorOf([&] { open(*connection, kAll); }), 3709);
    connection->Open(u"", u"", u"", ado::adOptionUnspecified);
    EXPECT_EQ(names(*connection), "1 Müller|2 Aal|3 Meier|");
}

TEST_F(Conformance, OpenFailsWithTheProvidersNumberAndCanBeTriedAgain) {
    const auto unnamed = factory().createConnection();
    EXPECT_EQ(errorOf([&] { unnamed->Properties().Item(u"Data Source").setValue(Text(u"x.mdb")); }), 0);
    EXPECT_EQ(errorOf([&] { unnamed->Properties().Item(u"Jet OLEDB:Database Password"); }), 3265);
    EXPECT_EQ(errorOf([&] { prepare()->Properties().Item(u"Gibt es nicht"); }), 3265);
    const auto openAt = [&](ado::Connection& connection) {
        return errorOf([&] { connection.Open(u"", u"", u"", ado::adOptionUnspecified); });
    };
    EXPECT_EQ(openAt(*prepare(kPassword, path.u16string() + u"x")), -2147467259);
    EXPECT_EQ(openAt(*prepare(kPassword, path.u16string() + u"x/y.mdb")), -2147467259);
    auto connection = prepare(u"geheim");
    EXPECT_EQ(openAt(*connection), -2147217843);
    EXPECT_EQ(connection->State(), ado::adStateClosed);
    connection->Properties().Item(u"Jet OLEDB:Database Password").setValue(Text(kPassword));
    EXPECT_EQ(openAt(*connection), 0);
    connection.reset();
    const base::Bytes whole = bytes();
    write({u'k', u'e', u'i', u'n', u'e'});
    EXPECT_EQ(openAt(*prepare()), -2147467259);
    write(whole);
}

TEST_F(Conformance, BrokenStatementsHaveTheEnginesNumbers) {
    const auto connection = connect();
    const base::Bytes before = bytes();
    const std::pair<base::TextView, std::int32_t> cases[] = {
        {u"SELECT * FROM Kunde", -2147217865},
        {u"SELECT * FROM Benutzerkonto WHERE Unbekannt = 1", -2147217904},
        {u"SELECT * FROM Benutzerkonto WHERE BenKTO_Name = 'O'Neil'", -2147217900},
        {u"SELECT * FROM Benutzerkonto WHERE BenKTO_ID = 'x'", -2147217913},
        {u"DELETE FROM Kunde", -2147217865},
        {u"DELETE Benutzerkonto", -2147217900},
        {u"UPDATE Benutzerkonto SET BenKTO_Name = 'Aal' WHERE BenKTO_ID = 1", -2147467259},
    };
    for (const auto& [statement, number] : cases) {
        const auto carryOut = [&, text = statement] {
            text.starts_with(u"SELECT") ? void(open(*connection, text)) : connection->Execute(text);
        };
        EXPECT_EQ(errorOf(carryOut), number) << base::toUtf8(statement);
    }
    EXPECT_EQ(bytes(), before);
    EXPECT_EQ(connection->State(), ado::adStateOpen);
}

TEST_F(Conformance, TheSevenStatementsOfTheToolWork) {
    namespace table = tolv::accountTable;
    const auto connection = connect();
    EXPECT_EQ(names(*connection, table::selectByName(u"MÜLLER")), "1 Müller|");
    EXPECT_EQ(names(*connection, table::selectOthersByName(u"Müller", 1)), "");
    EXPECT_EQ(names(*connection, table::selectOthersByName(u"Müller", 2)), "1 Müller|");
    EXPECT_EQ(names(*connection, table::selectById(3)), "3 Meier|");
    EXPECT_EQ(names(*connection, table::selectById(0)), "");
    EXPECT_EQ(names(*connection, table::selectAll()), "2 Aal|3 Meier|1 Müller|");
    connection->Execute(table::updateToInitialPassword(u"2"));
    EXPECT_EQ(get(*open(*connection, table::selectById(2)), u"BenKTO_Pass"),
              Value(Text(table::kStoredInitialPassword)));
    EXPECT_EQ(get(*open(*connection, table::selectById(1)), u"BenKTO_Pass"), Value(Text(u"p1")));
    connection->Execute(table::deleteById(u"1"));
    connection->Execute(table::deleteById(u"1"));
    EXPECT_EQ(names(*connection), "2 Aal|3 Meier|");
}

}  // namespace
}  // namespace conformance
