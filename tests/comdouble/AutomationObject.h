#pragma once

#include <span>

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "tests/comdouble/AdoDouble.h"
#include "tests/comdouble/Arguments.h"

namespace comdouble {

/// A member as callers find it.
struct Member {
    DISPID id;
    base::TextView name;
    WORD kinds;     ///< how it may be called: DISPATCH_METHOD, or DISPATCH_PROPERTYGET and DISPATCH_PROPERTYPUT
    UINT required;  ///< arguments that must be given, without the value of a put
    UINT most;      ///< arguments that may be given, without the value of a put
};

/// What all objects of the double have in common: counted references, the thread they belong to, names, and the form
/// of a call. A class says which members it has and carries them out.
///
/// Created with one reference, which belongs to whoever creates it.
class AutomationObject : public IDispatch {
public:
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

protected:
    /// @param className  as in "Connection"
    AutomationObject(base::TextView className, std::span<const Member> members);

    /// Gets a property or runs a method.
    /// @return what the call delivers, for the caller to clear
    /// @throws base::RuntimeError, Refusal, Ordered
    virtual VARIANT call(DISPID id, const Arguments& arguments) = 0;

    /// Puts a property; no class has any unless it says so.
    virtual void put(DISPID id, const VARIANT& value);

private:
    HRESULT requireOwnApartment() const;
    const Member& memberFor(DISPID id, WORD kinds) const;
    void checkForm(const Member& member, WORD kinds, const DISPPARAMS& parameters) const;
    void carryOut(DISPID id, WORD kinds, const DISPPARAMS& parameters, VARIANT* result);
    void raiseOrdered(const Member& member) const;
    void describe(const base::RuntimeError& error, EXCEPINFO* record) const;

    base::TextView className_;
    std::span<const Member> members_;
    ULONG references_ = 1;
    DWORD thread_;
};

}  // namespace comdouble
