#include <gtest/gtest.h>
#include <limits>

#include "ado/com/Connection.h"
#include "ado/com/Recordset.h"
#include "tests/support/Expect.h"
#include "tests/systemado/SystemAdo.h"

/// The client against an independent ADO. Wine's ADO has no provider: a connection never opens, and a record set has
/// only the rows that a program has put into its memory.
namespace systemado {
namespace {

using ado::com::Object;
using ado::com::Variant;
using test::errorOf;

class SystemAdoClient : public testing::Test {
protected:
    SystemAdoClient() {
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        ado_.emplace();
    }
    SystemAdoClient(const SystemAdoClient&) = delete;
    SystemAdoClient& operator=(const SystemAdoClient&) = delete;
    ~SystemAdoClient() override {
        ado_.reset();
        CoUninitialize();
    }

    /// A record set in memory with one column of this type and one row.
    struct Row {
        explicit Row(VARTYPE type) {
            const Variant name(base::TextView(u"Wert"));
            const Variant kind(std::int32_t{type});
            const Variant size(std::int32_t{100});
            const Variant mayBeNull(std::int32_t{0x20});
            recordset.put(L"CursorLocation", Variant(std::int32_t{3}));  // the client's side, which needs no provider
            fields = Object(recordset.get(L"Fields").object());
            fields.call(L"Append", {&name, &kind, &size, &mayBeNull});
            recordset.call(L"Open");
            recordset.call(L"AddNew");
            field = Object(fields.get(L"Item", name).object());
        }
        Object recordset{kClasses.recordset};
        Object fields;
        Object field;
    };

private:
    std::optional<SystemAdo> ado_;
};

TEST_F(SystemAdoClient, GivesStatesAndNumbers) {
    ado::com::Connection connection(kClasses.connection);
    EXPECT_EQ(connection.State(), ado::adStateClosed);
    EXPECT_EQ(connection.Provider(), u"MSDASQL");
    connection.setProvider(u"Microsoft.Jet.OLEDB.4.0");
    EXPECT_EQ(connection.Provider(), u"Microsoft.Jet.OLEDB.4.0");
    EXPECT_EQ(errorOf([&] { connection.Close(); }), 3704);
    EXPECT_EQ(errorOf([&] { connection.Execute(u"DELETE FROM Konto"); }), 3704);
    ado::com::Recordset closed(kClasses.recordset);
    EXPECT_EQ(closed.State(), ado::adStateClosed);
    EXPECT_EQ(errorOf([&] { closed.Close(); }), 3704);
    EXPECT_EQ(errorOf([&] { closed.Fields().Item(u"Wert"); }), 3265);
    EXPECT_EQ(errorOf([&] { closed.Fields().Item(0); }), 3265);
    EXPECT_EQ(errorOf([&] { closed.AddNew(); }), 3704);

    const Row row(VT_I4);
    EXPECT_EQ(row.recordset.get(L"State").int32(), ado::adStateOpen);
    EXPECT_EQ(row.recordset.get(L"RecordCount").int32(), 1);
    EXPECT_EQ(errorOf([&] { row.recordset.call(L"Open"); }), 3705);
    EXPECT_EQ(errorOf([&] { row.fields.get(L"Item", Variant(base::TextView{u"wert?"})); }), 3265);
    EXPECT_EQ(row.field.get(L"Name").text(), u"Wert");
    row.recordset.call(L"MoveFirst");
    EXPECT_FALSE(row.recordset.get(L"EOF").boolean());
    row.recordset.call(L"MovePrevious");  // Wine's ADO checks only this end of the rows
    EXPECT_EQ(errorOf([&] { row.field.get(L"Value"); }), 3021);
    row.recordset.call(L"MoveNext");
    row.recordset.call(L"MoveNext");
    EXPECT_TRUE(row.recordset.get(L"EOF").boolean());
}

/// "?" for what is not a text and cannot become one.
base::Text readBySystem(const Variant& value) {
    VARIANT text{};
    VARIANT borrowed = value.raw();
    if (FAILED(VariantChangeTypeEx(&text, &borrowed, LOCALE_INVARIANT, 0, VT_BSTR))) return u"?";
    base::Text read(text.bstrVal, text.bstrVal + SysStringLen(text.bstrVal));
    VariantClear(&text);
    return read;
}

/// Each value is written as the kind that the type's number names, means the same to the system as to us, and comes
/// back.
TEST_F(SystemAdoClient, KeepsEveryKindOfValue) {
    using base::Value;
    const struct {
        VARTYPE type;
        Value value;
        base::TextView text;
    } cases[] = {
        {VT_BOOL, true, u"-1"},
        {VT_BOOL, false, u"0"},
        {VT_UI1, std::uint8_t{255}, u"255"},
        {VT_I2, std::numeric_limits<std::int16_t>::min(), u"-32768"},
        {VT_I4, std::numeric_limits<std::int32_t>::min(), u"-2147483648"},
        {VT_CY, base::Currency{-12345}, u"-1.2345"},
        {VT_R4, -1.5F, u"-1.5"},
        {VT_R8, 0.1, u"0.1"},
        {VT_DATE, base::Date{2.75}, u"01/01/1900 18:00:00"},
        {VT_BSTR, base::Text(u" Grüße\0\xD83D\xDE00", 9), base::TextView(u" Grüße\0\xD83D\xDE00", 9)},
        {VT_BSTR, base::Text(), u""},
        {VT_DECIMAL, base::Decimal{true, 2, {1, 1, 0, 0}}, u"-42949672.97"},
        {VT_ARRAY | VT_UI1, base::Bytes{u'A', 0, 0xFC, 0}, u"Aü"},
        {VT_NULL, base::Null{}, u"?"},
    };
    for (const auto& [type, value, text] : cases) {
        SCOPED_TRACE(base::toUtf8(text));
        const Variant sent(value);
        EXPECT_EQ(sent.raw().vt, type);
        EXPECT_EQ(readBySystem(sent), text);
        const VARTYPE column = type == VT_BSTR || type == VT_NULL ? 202 : type == (VT_ARRAY | VT_UI1) ? 205 : type;
        const Row row(column);
        row.field.put(L"Value", sent);
        EXPECT_EQ(row.field.get(L"Value").value(), value);
    }
}

}  // namespace
}  // namespace systemado
