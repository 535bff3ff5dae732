#pragma once

#include <memory>
#include <vector>

#include "ado/Ado.h"
#include "ado/com/Variant.h"

namespace comdouble {

/// The arguments of one call, in the order in which they are written. Arguments of a plain type have been converted to
/// it; if they were left out, a number is -1 and all others are empty.
using Arguments = std::vector<ado::com::Variant>;

/// What an object of the double stands for. An item of a collection is looked up again at each call, so that an item of
/// a closed record set is refused.
struct Subject {
    std::shared_ptr<ado::Connection> connection = {};  ///< of a record set: the connection on which it is open
    std::shared_ptr<ado::Recordset> recordset = {};
    base::Text name = {};  ///< of a property or a field
};

/// One way to call a member, as the system's type library describes it.
struct Member {
    struct Parameter {
        VARTYPE type;  ///< VT_BSTR, VT_I4, VT_VARIANT; with VT_BYREF a variable that the call writes to
        bool isOptional = false;
    };

    base::TextView className;
    base::TextView name;
    WORD kind;  ///< DISPATCH_METHOD, DISPATCH_PROPERTYGET or DISPATCH_PROPERTYPUT
    std::vector<Parameter> parameters;
    VARTYPE result;  ///< the result of `run` is converted to it; VT_VOID if there is none
    /// @throws base::RuntimeError, and like fail()
    ado::com::Variant (*run)(Subject& on, const Arguments& with);
};

/// Everything that can be called, in all classes.
const std::vector<Member>& members();

}  // namespace comdouble
