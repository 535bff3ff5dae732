#pragma once

#include "base/RuntimeError.h"
#include "tests/comdouble/AdoDouble.h"
#include "tests/comdouble/Members.h"

namespace comdouble {

/// An object of one of the classes: counts references, belongs to its thread, finds members by name, and runs them if
/// they are called in the right form.
class AutomationObject final : public IDispatch {
public:
    /// @param className  as in members()
    static ado::com::Variant create(base::TextView className, Subject subject);
    /// What the object stands for; null if it is not one of the double's objects.
    static const Subject* subjectOf(IDispatch* object);

    AutomationObject(base::TextView className, Subject subject);
    AutomationObject(const AutomationObject&) = delete;
    AutomationObject& operator=(const AutomationObject&) = delete;
    virtual ~AutomationObject();

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID mustBeNull, LPOLESTR* names, UINT count, LCID locale,
                                            DISPID* ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID mustBeNull, LCID locale, WORD kinds, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* record, UINT* badArgument) override;

private:
    HRESULT requireOwnApartment() const;
    const Member& memberFor(DISPID id, WORD kinds) const;
    ado::com::Variant carryOut(const Member& member, const DISPPARAMS& parameters);
    Raised described(const base::RuntimeError& error) const;

    base::TextView className_;
    Subject subject_;
    ULONG references_ = 1;
    DWORD thread_;
};

}  // namespace comdouble
