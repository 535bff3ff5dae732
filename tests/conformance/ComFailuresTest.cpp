#include <functional>

#include "ado/com/Factory.h"
#include "tests/comdouble/AdoDouble.h"
#include "tests/conformance/Conformance.h"

/// Failures of a provider. Each must arrive as number and description; the fixture checks that nothing
/// stays held and that every text is freed exactly once. The journeys check what happens to the file
/// (tests/wine/provider_faults.py).
namespace conformance {
namespace {

using comdouble::Raised;

struct Failure {
    std::int32_t number = 0;
    Text description;
};

Failure failureOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const base::RuntimeError& error) {
        return {error.number(), error.description()};
    }
    return {};
}

constexpr std::int32_t kUnspecified = -2147467259;

class ComFailures : public Conformance {
protected:
    /// The failure that the caller sees if the provider raises this.
    Failure failureWith(const Raised& raised) const {
        comdouble::state().faults.calls[u"Connection.Open"] = raised;
        const auto connection = prepare();
        return failureOf([&] { connection->Open(u"", u"", u"", ado::adOptionUnspecified); });
    }
};

TEST_F(ComFailures, EveryExceptionRecordGivesANumberAndADescription) {
    constexpr SCODE kClosed = static_cast<SCODE>(0x800A0E78);
    const struct {
        Raised raised;
        std::int32_t number;
        base::TextView description;  ///< empty: the system's own text, whatever it is
    } cases[] = {
        {{.scode = kUnspecified, .description = u"Wegen"}, kUnspecified, u"Wegen"},
        {{.scode = kClosed, .description = u"Zu"}, 3704, u"Zu"},
        {{.code = 1004, .description = u"Nur wCode"}, 1004, u"Nur wCode"},
        {{.code = 1004, .scode = kClosed, .description = u"Beide"}, 3704, u"Beide"},
        {{.description = u"Keine Nummer"}, DISP_E_EXCEPTION, u"Keine Nummer"},
        {{.scode = kUnspecified}, kUnspecified, u""},
        {{.scode = kUnspecified, .description = u""}, kUnspecified, u""},
        {{.scode = kClosed}, 3704, u""},
        {{}, DISP_E_EXCEPTION, u""},
    };
    for (const auto& [raised, number, description] : cases) {
        for (const bool deferred : {false, true}) {
            Raised varied = raised;
            varied.deferred = deferred;
            if (deferred) varied.source = varied.helpFile = u"Hilfe.chm";
            const Failure failure = failureWith(varied);
            EXPECT_EQ(failure.number, number) << deferred;
            EXPECT_FALSE(failure.description.empty()) << number << deferred;
            EXPECT_TRUE(description.empty() || failure.description == description) << number << deferred;
        }
    }
}

TEST_F(ComFailures, AResultWithoutAnExceptionRecordGetsTheSystemsText) {
    Raised raised;
    raised.result = E_ACCESSDENIED;
    const Failure denied = failureWith(raised);
    EXPECT_EQ(denied.number, E_ACCESSDENIED);
    EXPECT_GT(denied.description.size(), 5U);
    EXPECT_NE(denied.description.back(), u'\n');
    raised.result = static_cast<HRESULT>(0x800A0E7A);
    const Failure unknown = failureWith(raised);
    EXPECT_EQ(unknown.number, 3706);
    EXPECT_EQ(unknown.description, u"Automatisierungsfehler");
}

TEST_F(ComFailures, EachStepOfConnectingThatFailsIsAnError) {
    comdouble::state().faults.calls[u"Connection.Provider"] =
        Raised{.scode = static_cast<SCODE>(0x800A0E7A), .description = u"Kein Provider"};
    EXPECT_EQ(errorOf([&] { prepare(); }), 3706);
    comdouble::state().faults = {};
    comdouble::state().faults.calls[u"Property.Value:Data Source"] =
        Raised{.scode = kUnspecified, .description = u"Nicht so"};
    EXPECT_EQ(failureOf([&] { prepare(); }).description, u"Nicht so");
    comdouble::state().faults = {};
    // A class whose module does not exist.
    constexpr CLSID kNobody{0x9d1c1f0a, 0x4f0e, 0x4b43, {0x9c, 0x55, 0x11, 0x57, 0x08, 0x5d, 0x2a, 0x01}};
    ado::com::Factory missing({kNobody, kNobody});
    EXPECT_EQ(errorOf([&] { missing.createConnection(); }), REGDB_E_CLASSNOTREG);
    EXPECT_EQ(errorOf([&] { missing.createRecordset(); }), REGDB_E_CLASSNOTREG);
}

TEST_F(ComFailures, UnusualTypesAreConvertedAndUnknownOnesAreErrors) {
    const auto connection = connect();
    const auto deliver = [&](VARTYPE type, std::int64_t content) {
        comdouble::state().faults.oddValues[u"BenKTO_Name"] = [type, content] {
            VARIANT odd{};
            odd.llVal = content;
            odd.vt = type;
            return odd;
        };
        return get(*open(*connection, kAll), u"BenKTO_Name");
    };
    const struct {
        VARTYPE type;
        std::int64_t content;
        Value value;
    } delivered[] = {{VT_EMPTY, 0, base::Null{}},
                     {VT_BSTR, 0, Text()},
                     {VT_I8, -2147483648LL, std::numeric_limits<std::int32_t>::min()},
                     {VT_I8, -4294967297LL, base::Decimal{true, 0, {1, 1, 0, 0}}},
                     {VT_UI4, 0x80000000LL, base::Decimal{false, 0, {0x80000000U, 0, 0, 0}}},
                     {VT_UI2, 65535, 65535},
                     {VT_I1, -1, std::int16_t{-1}}};
    for (const auto& [type, content, value] : delivered)
        EXPECT_EQ(deliver(type, content), value) << type << " " << content;
    const auto array = [] { return reinterpret_cast<std::intptr_t>(SafeArrayCreateVector(VT_I4, 0, 3)); };
    EXPECT_EQ(errorOf([&] { deliver(VT_ERROR, E_FAIL); }), 13);
    EXPECT_EQ(errorOf([&] { deliver(VT_UNKNOWN, 0); }), 13);
    EXPECT_EQ(errorOf([&] { deliver(VT_ARRAY | VT_I4, array()); }), 13);
}

}  // namespace
}  // namespace conformance
