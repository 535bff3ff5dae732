#include "tests/comdouble/AdoDouble.h"

#include <stdexcept>

#include "ado/embedded/Factory.h"
#include "tests/comdouble/AutomationObject.h"

namespace comdouble {

namespace {

bool isOwnApartment() {
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    return SUCCEEDED(CoGetApartmentType(&type, &qualifier)) && (type == APTTYPE_STA || type == APTTYPE_MAINSTA);
}

/// Lives as long as the program; references to it are not counted.
class ClassObject final : public IClassFactory {
public:
    explicit ClassObject(base::TextView className) : className_(className) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        const bool isKnown = id == IID_IUnknown || id == IID_IClassFactory;
        *object = isKnown ? static_cast<IClassFactory*>(this) : nullptr;
        return isKnown ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID id, void** object) override {
        *object = nullptr;
        if (outer != nullptr) return CLASS_E_NOAGGREGATION;
        if (!isOwnApartment()) return RPC_E_WRONG_THREAD;
        ado::embedded::Factory engine;
        Subject subject;
        if (className_ == u"Connection")
            subject.connection = engine.createConnection();
        else
            subject.recordset = engine.createRecordset();
        return AutomationObject::create(className_, std::move(subject)).object()->QueryInterface(id, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

    DWORD registerAs(const CLSID& id) {
        DWORD cookie = 0;
        const HRESULT result = CoRegisterClassObject(id, this, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie);
        if (FAILED(result)) throw std::runtime_error("the double's classes could not be registered");
        return cookie;
    }

private:
    base::TextView className_;
};

}  // namespace

void fail(const Raised& raised) {
    throw std::make_shared<const Raised>(raised);
}

State& state() {
    static State only;
    return only;
}

Registration::Registration() {
    static ClassObject connections(u"Connection");
    static ClassObject recordsets(u"Recordset");
    state().faults = {};
    state().breaches = 0;
    state().recordsNotFilledIn = 0;
    connectionCookie_ = connections.registerAs(kConnectionClass);
    recordsetCookie_ = recordsets.registerAs(kRecordsetClass);
}

Registration::~Registration() {
    CoRevokeClassObject(recordsetCookie_);
    CoRevokeClassObject(connectionCookie_);
}

}  // namespace comdouble
