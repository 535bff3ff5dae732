#include <functional>
#include <gmock/gmock.h>
#include <thread>

#include "tests/comdouble/DoubleFixture.h"

namespace comdouble {
namespace {

using test::Answer;
using test::get;
using test::invoke;
using test::kAll;
using test::kMethod;
using test::missing;
using test::of;

constexpr std::int32_t kFailed = -2147467259;
constexpr WORD kGet = DISPATCH_PROPERTYGET;
constexpr WORD kPut = DISPATCH_PROPERTYPUT;

/// A place for a currency.
VARIANT byReference() {
    static CY place{};
    VARIANT variant{};
    V_VT(&variant) = VT_BYREF | VT_CY;
    V_CYREF(&variant) = &place;
    return variant;
}

class AdoDoubleTest : public test::DoubleFixture {};

TEST_F(AdoDoubleTest, TakesCallsInTheirExactFormOnly) {
    const auto connection = create(Registration::connectionClass());
    const struct {
        const char* what;
        base::TextView member;
        WORD kinds;
        HRESULT expected;
        std::vector<std::function<VARIANT()>> arguments;
    } cases[] = {
        {"no such member", u"Opne", kMethod, DISP_E_UNKNOWNNAME, {}},
        {"any case", u"sTATE", kGet, S_OK, {}},
        {"a property called as a method", u"State", kMethod, DISP_E_MEMBERNOTFOUND, {}},
        {"a property got or called", u"State", kGet | kMethod, S_OK, {}},
        {"a method got as a property", u"Close", kGet, DISP_E_MEMBERNOTFOUND, {}},
        {"a property that is read only", u"State", kPut, DISP_E_MEMBERNOTFOUND, {[] { return of(1); }}},
        {"put as a reference", u"Provider", DISPATCH_PROPERTYPUTREF, DISP_E_MEMBERNOTFOUND, {[] { return of(u"x"); }}},
        {"put and called", u"Provider", kPut | kMethod, DISP_E_MEMBERNOTFOUND, {[] { return of(u"x"); }}},
        {"put without a value", u"Provider", kPut, DISP_E_PARAMNOTOPTIONAL, {}},
        {"put two values", u"Provider", kPut, DISP_E_BADPARAMCOUNT, {[] { return of(u"x"); }, [] { return of(u"y"); }}},
        {"put a number for a text", u"Provider", kPut, DISP_E_TYPEMISMATCH, {[] { return of(1); }}},
        {"an argument too many", u"State", kGet, DISP_E_BADPARAMCOUNT, {[] { return of(0); }}},
        {"an argument too few", u"Execute", kMethod, DISP_E_PARAMNOTOPTIONAL, {}},
        {"a required one left out", u"Execute", kMethod, DISP_E_PARAMNOTOPTIONAL, {missing}},
        {"a connection string", u"Open", kMethod, E_NOTIMPL, {[] { return of(u"Provider=x"); }}},
        {"Open's options in the place of the text", u"Open", kMethod, E_NOTIMPL, {[] { return of(-1); }}},
        {"a reference to a value", u"Provider", kPut, E_NOTIMPL, {byReference}},
        {"null for a text", u"Open", kMethod, DISP_E_TYPEMISMATCH, {[] { return toVariant(base::Null{}); }}},
    };
    for (const auto& tried : cases) {
        SCOPED_TRACE(tried.what);
        test::Given given = {};
        for (const auto& make : tried.arguments)
            given.add(make());
        EXPECT_EQ(invoke(connection, tried.member, tried.kinds, std::move(given)).result, tried.expected);
    }
}

TEST_F(AdoDoubleTest, RefusesWhatSurroundsACall) {
    const auto connection = create(Registration::connectionClass());
    const auto recordset = create(Registration::recordsetClass());
    DISPID provider = 0;
    DISPID state = 0;
    EXPECT_EQ(test::idOf(connection, u"Provider", provider, IID_IDispatch), DISP_E_UNKNOWNINTERFACE);
    ASSERT_EQ(test::idOf(connection, u"Provider", provider), S_OK);
    ASSERT_EQ(test::idOf(connection, u"State", state), S_OK);

    Answer answer;
    test::Given text = {of(u"x")};
    test::Given nothing = {};
    test::invokeId(answer, connection, provider, kPut, text);
    EXPECT_EQ(answer.result, DISP_E_PARAMNOTFOUND) << "a put whose value is not named as one";
    DISPID named = DISPID_PROPERTYPUT;
    test::invokeId(answer, connection, state, kGet, text, &named);
    EXPECT_EQ(answer.result, DISP_E_NONAMEDARGS);
    test::invokeId(answer, recordset, state, kGet, nothing);
    EXPECT_EQ(answer.result, DISP_E_MEMBERNOTFOUND) << "an id of another class";
    DISPPARAMS none{};
    EXPECT_EQ(connection->Invoke(state, IID_IDispatch, 0, kGet, &none, nullptr, nullptr, nullptr),
              DISP_E_UNKNOWNINTERFACE);
    EXPECT_EQ(connection->Invoke(state, IID_NULL, 0, kGet, nullptr, nullptr, nullptr, nullptr), E_INVALIDARG);
    EXPECT_EQ(connection->Invoke(state, IID_NULL, 0, kGet, &none, nullptr, nullptr, nullptr), S_OK)
        << "nobody wants the answer";
    wchar_t open[] = L"Open";
    wchar_t options[] = L"Options";
    LPOLESTR names[] = {open, options};
    DISPID ids[2] = {};
    EXPECT_EQ(connection->GetIDsOfNames(IID_NULL, names, 2, 0, ids), DISP_E_UNKNOWNNAME) << "an argument's name";
    EXPECT_EQ(connection->GetIDsOfNames(IID_NULL, names, 0, 0, ids), E_INVALIDARG);

    EXPECT_EQ(connection->QueryInterface(IID_IDispatch, nullptr), E_POINTER);
    void* other = &answer;
    EXPECT_EQ(connection->QueryInterface(IID_IClassFactory, &other), E_NOINTERFACE);
    EXPECT_EQ(other, nullptr);
}

TEST_F(AdoDoubleTest, NamesTheArgumentToBlame) {
    const auto connection = openConnection();
    const Answer answer =
        invoke(create(Registration::recordsetClass()), u"Open", kMethod, {of(u"x"), of(connection), of(u"?")});
    EXPECT_EQ(answer.result, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(answer.badArgument, 0U) << "the last of three is the first in the array";
}

TEST_F(AdoDoubleTest, ConnectionGoesThroughItsStatesInOrder) {
    const auto connection = create(Registration::connectionClass());
    EXPECT_EQ(get(connection, u"State").integer(), 0);
    EXPECT_EQ(get(connection, u"Provider").text(), u"MSDASQL");
    EXPECT_EQ(get(get(connection, u"Properties").object(), u"Count").integer(), 1);
    EXPECT_EQ(invoke(connection, u"Open", kMethod, {}).number(), kFailed) << "the default provider";
    EXPECT_EQ(invoke(connection, u"Close", kMethod, {}).number(), 3704);
    EXPECT_EQ(invoke(connection, u"Execute", kMethod, {of(u"DELETE FROM Konto")}).number(), 3704);

    EXPECT_EQ(invoke(connection, u"Provider", kPut, {of(u"NichtDa")}).number(), 0) << "not looked at yet";
    EXPECT_EQ(get(connection, u"Properties").number(), 3706);
    EXPECT_EQ(invoke(connection, u"Open", kMethod, {}).number(), 3706);

    prepare(connection);
    const auto properties = get(connection, u"Properties").object();
    EXPECT_EQ(get(properties, u"Item", {of(u"Daten Source")}).number(), 3265);
    const auto source = get(properties, u"Item", {of(u"data source")}).object();
    EXPECT_EQ(get(source, u"Name").text(), u"Data Source");
    EXPECT_EQ(invoke(source, u"Value", kPut, {of(17)}).number(), 3421);
    EXPECT_EQ(invoke(connection, u"Open", kMethod, {of(u""), of(u"Eva")}).number(), -2147217843);
    EXPECT_EQ(invoke(connection, u"Open", kMethod, {of(u""), of(u"admin"), of(u"x")}).number(), -2147217843);
    EXPECT_EQ(invoke(connection, u"Open", kMethod, {of(u""), of(u""), of(u""), of(7)}).number(), 3001);
    EXPECT_EQ(get(connection, u"State").integer(), 0);

    EXPECT_EQ(invoke(connection, u"Open", kMethod, {of(u""), missing(), of(u""), of(-1)}).number(), 0);
    EXPECT_EQ(get(connection, u"State").integer(), 1);
    EXPECT_EQ(invoke(connection, u"Open", kMethod, {}).number(), 3705);
    EXPECT_EQ(invoke(connection, u"Provider", kPut, {of(u"x")}).number(), 3705);
    EXPECT_EQ(invoke(source, u"Value", kPut, {of(u"x")}).number(), 3705);
    EXPECT_EQ(invoke(connection, u"Close", kMethod, {}).number(), 0);
    EXPECT_EQ(get(connection, u"State").integer(), 0);
}

TEST_F(AdoDoubleTest, OpenFailsWithTheProvidersRecord) {
    const auto connection = create(Registration::connectionClass());
    prepare(connection, u"falsch");
    const Answer answer = invoke(connection, u"Open", kMethod, {});
    EXPECT_EQ(answer.number(), -2147217843);
    EXPECT_EQ(answer.record.wCode, 0);
    EXPECT_EQ(answer.description(), u"Kein zulässiges Kennwort.");
    EXPECT_EQ(fromBstr(answer.record.bstrSource), u"Microsoft JET Database Engine");
    const Answer own = invoke(connection, u"Close", kMethod, {});
    EXPECT_EQ(own.record.scode, static_cast<SCODE>(0x800A0E78)) << "the classes' own are of their facility";
    EXPECT_EQ(fromBstr(own.record.bstrSource), u"ADODB.Connection");
    EXPECT_EQ(get(connection, u"State").integer(), 0);
}

TEST_F(AdoDoubleTest, ClosedRecordsetRefuses) {
    const auto recordset = create(Registration::recordsetClass());
    EXPECT_EQ(get(recordset, u"State").integer(), 0);
    for (const base::TextView property : {u"EOF", u"RecordCount"})
        EXPECT_EQ(get(recordset, property).number(), 3704) << base::toUtf8(property);
    for (const base::TextView method : {u"MoveNext", u"AddNew", u"Update", u"Close"})
        EXPECT_EQ(invoke(recordset, method, kMethod, {}).number(), 3704) << base::toUtf8(method);
    const auto fields = get(recordset, u"Fields").object();
    EXPECT_EQ(get(fields, u"Count").integer(), 0);
    EXPECT_EQ(get(fields, u"Item", {of(u"Nr")}).number(), 3265);
}

TEST_F(AdoDoubleTest, RecordsetWantsItsArgumentsInPlace) {
    const auto connection = openConnection();
    const auto closed = create(Registration::connectionClass());
    const auto recordset = create(Registration::recordsetClass());
    const auto open = [&](auto... arguments) { return invoke(recordset, u"Open", kMethod, {arguments...}).number(); };
    EXPECT_EQ(open(), 3001);
    EXPECT_EQ(open(of(connection), of(kAll)), 3001) << "the other way round";
    EXPECT_EQ(open(of(kAll)), 3709);
    EXPECT_EQ(open(of(kAll), of(u"Data Source=x")), kFailed) << "a text opens another connection";
    EXPECT_EQ(open(of(kAll), of(closed)), 3709);
    EXPECT_EQ(open(of(kAll), of(recordset)), 3001);
    EXPECT_EQ(open(of(kAll), of(connection), of(7)), 3001);
    EXPECT_EQ(open(of(kAll), of(connection), of(3), of(9)), 3001);
    EXPECT_EQ(open(of(kAll), of(connection), of(3), of(1), of(2)), E_NOTIMPL) << "the name of a table";
    EXPECT_EQ(open(of(kAll), of(connection), missing(), of(1)), E_NOTIMPL) << "a forward-only cursor";
    EXPECT_EQ(open(of(kAll), of(connection), of(3), of(4)), E_NOTIMPL) << "batches";
    EXPECT_EQ(open(of(u"SELECT * FROM Nirgends"), of(connection), of(3), of(1)), -2147217865);
    EXPECT_EQ(open(of(u"DELETE FROM Konto"), of(connection), of(3), of(1)), -2147467259) << "no rows";
    EXPECT_EQ(get(recordset, u"State").integer(), 0);
    EXPECT_EQ(open(of(kAll), of(connection), of(3), of(1), of(-1)), 0);
    EXPECT_EQ(open(of(kAll), of(connection), of(3), of(1), of(-1)), 3705);
}

TEST_F(AdoDoubleTest, ValuesHaveTheirOwnTypesAndNothingIsReadOfClosedRows) {
    const auto recordset = openRecordset(openConnection(), kAll, 1);
    const Answer count = get(recordset, u"RecordCount");
    EXPECT_EQ(V_VT(&count.value), sizeof(void*) == 8 ? VT_I8 : VT_I4);
    EXPECT_EQ(invoke(recordset, u"MoveNext", kMethod, {}).number(), 0);
    const Answer nothing = get(field(recordset, u"Notiz"), u"Value");
    EXPECT_EQ(V_VT(&nothing.value), VT_NULL);
    const Answer no = get(field(recordset, u"Recht"), u"Value");
    EXPECT_EQ(V_VT(&no.value), VT_BOOL);
    EXPECT_FALSE(no.truth());
    const auto name = field(recordset, u"Name");
    EXPECT_EQ(invoke(recordset, u"Update", kMethod, {}).number(), 3251);
    EXPECT_EQ(invoke(recordset, u"Close", kMethod, {}).number(), 0);
    EXPECT_EQ(get(name, u"Value").number(), 3704);
}

TEST_F(AdoDoubleTest, ExecuteDeliversAClosedRecordsetAndTakesNothingElse) {
    const auto connection = openConnection();
    const base::TextView change = u"UPDATE Konto SET Recht = True";
    const auto execute = [&](auto... arguments) { return invoke(connection, u"Execute", kMethod, {arguments...}); };
    EXPECT_EQ(get(execute(of(change)).object(), u"State").integer(), 0);
    EXPECT_EQ(execute(of(change), byReference(), of(-1)).result, E_NOTIMPL) << "the number of rows";
    EXPECT_EQ(execute(of(change), of(0)).result, DISP_E_TYPEMISMATCH) << "the options in its place";
    EXPECT_EQ(execute(of(change), missing()).result, DISP_E_TYPEMISMATCH) << "left out where it could be left off";
    EXPECT_EQ(execute(of(kAll)).result, E_NOTIMPL) << "rows";
    EXPECT_EQ(execute(of(u"UPDATE Konto SET")).number(), -2147217900);
}

TEST_F(AdoDoubleTest, ObjectsKeepAliveWhatTheyNeed) {
    auto connection = openConnection();
    auto recordset = openRecordset(connection, kAll, 2);
    auto name = field(recordset, u"Name");
    EXPECT_EQ(liveObjects(), 3);
    connection = {};
    recordset = {};
    EXPECT_EQ(liveObjects(), 3);
    EXPECT_EQ(get(name, u"Value").text(), u"Müller");
    name = {};
    EXPECT_EQ(liveObjects(), 0);
}

TEST_F(AdoDoubleTest, AnotherThreadIsRefusedAndCounted) {
    const auto connection = openConnection();
    DISPID state = 0;
    ASSERT_EQ(test::idOf(connection, u"State", state), S_OK);
    std::thread([&] {
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
        Answer answer;
        test::Given nothing = {};
        test::invokeId(answer, connection, state, kGet, nothing);
        EXPECT_EQ(answer.result, RPC_E_WRONG_THREAD);
        EXPECT_EQ(test::idOf(connection, u"State", state), RPC_E_WRONG_THREAD);
        void* object = nullptr;
        EXPECT_EQ(connection->QueryInterface(IID_IDispatch, &object), RPC_E_WRONG_THREAD);
        connection->AddRef();
        connection->Release();
        CoUninitialize();
    }).join();
    EXPECT_EQ(apartment.takeBreaches(), 5);
}

TEST_F(AdoDoubleTest, ClassesAreOfferedToTheirOwnApartmentAlone) {
    std::thread([] {
        void* object = nullptr;
        EXPECT_EQ(CoCreateInstance(Registration::connectionClass(), nullptr, CLSCTX_ALL, IID_IDispatch, &object),
                  CO_E_NOTINITIALIZED);
    }).join();
    void* object = nullptr;
    EXPECT_EQ(CoCreateInstance(Registration::connectionClass(), nullptr, CLSCTX_ALL, IID_IClassFactory, &object),
              E_NOINTERFACE);
    IUnknown* const outer = create(Registration::recordsetClass()).get();
    EXPECT_EQ(CoCreateInstance(Registration::connectionClass(), outer, CLSCTX_ALL, IID_IUnknown, &object),
              CLASS_E_NOAGGREGATION);
}

TEST_F(AdoDoubleTest, ClassesWantAnApartmentOfOneThread) {
    apartment.leave();
    std::thread([] {
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
        {
            const Registration registration;
            void* object = nullptr;
            EXPECT_EQ(CoCreateInstance(Registration::recordsetClass(), nullptr, CLSCTX_ALL, IID_IDispatch, &object),
                      RPC_E_WRONG_THREAD);
        }
        CoUninitialize();
    }).join();
}

TEST_F(AdoDoubleTest, NothingMayBeCalledAfterComIsLeft) {
    auto connection = openConnection();
    apartment.leave();
    EXPECT_EQ(get(connection, u"State").result, CO_E_NOTINITIALIZED);
    EXPECT_EQ(apartment.takeBreaches(), 1);
    connection = {};
    EXPECT_EQ(apartment.takeBreaches(), 1);
    EXPECT_EQ(liveObjects(), 0);
}

}  // namespace
}  // namespace comdouble
