#pragma once

#include <memory>
#include <vector>

#include "ado/Ado.h"
#include "ado/com/Variant.h"

namespace comdouble {

/// The arguments of one call, in the order in which they are written. Those of a plain type have been converted to it;
/// of those that were left out a number is -1 and all others are empty.
using Arguments = std::vector<ado::com::Variant>;

/// What an object of the double stands for. An item of a collection is looked up anew with each call, so that one of
/// a closed record set is refused.
struct Subject {
    std::shared_ptr<ado::Connection> connection = {};  ///< of a record set: that on which it is open
    std::shared_ptr<ado::Recordset> recordset = {};
    base::Text name = {};  ///< of a property or a field
};

/// One way to call one member, as the system's type library describes it.
struct Member {
    struct Parameter {
        VARTYPE type;  ///< VT_BSTR, VT_I4, VT_VARIANT; with VT_BYREF a variable for the call to write to
        bool isOptional = false;
    };

    base::TextView className;
    base::TextView name;
    WORD kind;  ///< DISPATCH_METHOD, DISPATCH_PROPERTYGET or DISPATCH_PROPERTYPUT
    std::vector<Parameter> parameters;
    VARTYPE result;  ///< to which that of `run` is converted; VT_VOID if there is none
    /// @throws base::RuntimeError, and as fail()
    ado::com::Variant (*run)(Subject& on, const Arguments& with);
};

/// All that can be called, in all classes.
const std::vector<Member>& members();

}  // namespace comdouble
