#include "tests/comdouble/AdoDouble.h"

#include <memory>
#include <stdexcept>

#include "tests/comdouble/ConnectionObject.h"
#include "tests/comdouble/RecordsetObject.h"
#include "tests/comdouble/State.h"

namespace comdouble {

namespace {

constexpr CLSID kConnectionClass = {0x6B1F6A52, 0x4C1D, 0x4E0B, {0x9A, 0x37, 0x51, 0xD2, 0x08, 0xE4, 0x7C, 0x11}};
constexpr CLSID kRecordsetClass = {0x6B1F6A53, 0x4C1D, 0x4E0B, {0x9A, 0x37, 0x51, 0xD2, 0x08, 0xE4, 0x7C, 0x11}};

bool isOwnApartment() {
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    return SUCCEEDED(CoGetApartmentType(&type, &qualifier)) && (type == APTTYPE_STA || type == APTTYPE_MAINSTA);
}

/// Lives as long as the program; its references are not counted.
template <typename Object>
class ClassObject final : public IClassFactory {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        if (object == nullptr) return E_POINTER;
        const bool known = id == IID_IUnknown || id == IID_IClassFactory;
        *object = known ? static_cast<IClassFactory*>(this) : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID id, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (outer != nullptr) return CLASS_E_NOAGGREGATION;
        if (!isOwnApartment()) return RPC_E_WRONG_THREAD;
        AutomationObject* const made = std::make_unique<Object>().release();
        const HRESULT result = made->QueryInterface(id, object);
        made->Release();
        return result;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

template <typename Object>
DWORD registerClass(const CLSID& id) {
    static ClassObject<Object> classObject;
    DWORD cookie = 0;
    const HRESULT result = CoRegisterClassObject(id, &classObject, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie);
    if (FAILED(result)) throw std::runtime_error("the double's classes could not be registered");
    return cookie;
}

}  // namespace

State& state() {
    static State only;
    return only;
}

Registration::Registration() {
    state().faults = {};
    state().breaches = 0;
    state().recordsNotFilledIn = 0;
    connectionCookie_ = registerClass<ConnectionObject>(kConnectionClass);
    recordsetCookie_ = registerClass<RecordsetObject>(kRecordsetClass);
}

Registration::~Registration() {
    CoRevokeClassObject(recordsetCookie_);
    CoRevokeClassObject(connectionCookie_);
}

const CLSID& Registration::connectionClass() {
    return kConnectionClass;
}

const CLSID& Registration::recordsetClass() {
    return kRecordsetClass;
}

Faults& Registration::faults() {
    return state().faults;
}

std::int32_t liveObjects() {
    return state().liveObjects;
}

std::int32_t recordsNotFilledIn() {
    return state().recordsNotFilledIn;
}

std::int32_t breaches() {
    return state().breaches;
}

}  // namespace comdouble
