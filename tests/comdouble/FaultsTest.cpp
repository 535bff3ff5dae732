#include <gmock/gmock.h>

#include "tests/comdouble/DoubleFixture.h"

namespace comdouble {
namespace {

using test::Answer;
using test::get;
using test::invoke;
using test::kAll;
using test::kMethod;
using test::of;

class FaultsTest : public test::DoubleFixture {};

TEST_F(FaultsTest, RecordIsFilledInAsOrdered) {
    const auto connection = create(Registration::connectionClass());
    Raised& raised = Registration::faults().calls[u"Connection.Open"];
    raised.code = 1004;
    raised.source = u"Quelle";
    const Answer plain = invoke(connection, u"Open", kMethod, {});
    EXPECT_EQ(plain.result, DISP_E_EXCEPTION);
    EXPECT_EQ(plain.record.wCode, 1004);
    EXPECT_EQ(fromBstr(plain.record.bstrSource), u"Quelle");
    EXPECT_EQ(plain.record.bstrDescription, nullptr);

    raised = {};
    raised.scode = E_FAIL;
    raised.description = u"später";
    raised.deferred = true;
    Answer deferred = invoke(connection, u"Open", kMethod, {});
    ASSERT_NE(deferred.record.pfnDeferredFillIn, nullptr);
    EXPECT_EQ(deferred.record.scode, 0);
    EXPECT_EQ(recordsNotFilledIn(), 1);
    EXPECT_EQ(deferred.record.pfnDeferredFillIn(&deferred.record), S_OK);
    EXPECT_EQ(deferred.record.scode, E_FAIL);
    EXPECT_EQ(deferred.description(), u"später");

    raised = {};
    raised.result = E_OUTOFMEMORY;
    EXPECT_EQ(invoke(connection, u"Open", kMethod, {}).result, E_OUTOFMEMORY);
    raised.result = DISP_E_EXCEPTION;
    EXPECT_EQ(invoke(connection, u"Open", kMethod, {}).number(), 0) << "a record with nothing in it";
    EXPECT_EQ(get(connection, u"State").integer(), 0);
}

TEST_F(FaultsTest, PropertyIsRefusedByItsName) {
    const auto connection = create(Registration::connectionClass());
    prepare(connection);
    Registration::faults().properties[u"Data Source"].scode = E_ACCESSDENIED;
    const auto put = [&](base::TextView name) {
        const auto property = get(get(connection, u"Properties").object(), u"Item", {of(name)}).object();
        return invoke(property, u"Value", DISPATCH_PROPERTYPUT, {of(u"x")}).number();
    };
    EXPECT_EQ(put(u"Data Source"), E_ACCESSDENIED);
    EXPECT_EQ(put(u"Jet OLEDB:Database Password"), 0);
}

TEST_F(FaultsTest, FileDiesBetweenTwoStatements) {
    const auto connection = openConnection();
    const auto recordset = openRecordset(connection, kAll, 2);
    const auto other = openRecordset(connection, kAll, 2);
    Registration::faults().statementsUntilDeath = 1;
    EXPECT_EQ(invoke(recordset, u"AddNew", kMethod, {}).number(), 0);
    EXPECT_EQ(invoke(recordset, u"Update", kMethod, {}).number(), -2147467259);
    EXPECT_EQ(invoke(connection, u"Execute", kMethod, {of(u"DELETE FROM Konto")}).number(), -2147467259);
    EXPECT_EQ(invoke(other, u"MoveNext", kMethod, {}).number(), -2147467259) << "a fetch";
    Registration::faults().statementsUntilDeath.reset();
    EXPECT_EQ(invoke(connection, u"Execute", kMethod, {of(u"DELETE FROM Konto")}).number(), -2147467259)
        << "it stays dead";
    EXPECT_EQ(invoke(connection, u"Close", kMethod, {}).number(), 0);
    const auto again = openConnection();
    EXPECT_FALSE(get(openRecordset(again, kAll, 1), u"EOF").truth()) << "nothing was deleted";
}

TEST_F(FaultsTest, RowsFieldsAndValuesAreOdd) {
    const auto connection = openConnection();
    const auto recordset = openRecordset(connection, kAll, 1);
    Faults& faults = Registration::faults();
    faults.oddValues[u"Name"] = [] { return numberVariant(17); };
    EXPECT_EQ(get(field(recordset, u"name"), u"Value").integer(), 17);
    faults.missingField = u"Name";
    const auto fields = get(recordset, u"Fields").object();
    EXPECT_EQ(get(fields, u"Count").integer(), 4);
    EXPECT_EQ(get(fields, u"Item", {of(u"Name")}).number(), 3265);
    faults.missingRows = 1;
    EXPECT_EQ(invoke(recordset, u"MoveNext", kMethod, {}).number(), 0);
    EXPECT_TRUE(get(recordset, u"EOF").truth());
    const Answer count = get(recordset, u"RecordCount");
    EXPECT_EQ(V_I4(&count.value), 2);
}

}  // namespace
}  // namespace comdouble
