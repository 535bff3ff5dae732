#pragma once

#include <initializer_list>
#include <utility>
#include <vector>

#include "ado/com/SystemHeaders.h"
#include "ado/com/Variant.h"

namespace ado::com {

/// An automation object whose members are called by name. A name is looked up when it is first used, and its id is kept
/// as long as the object lives. Every call may throw what the object raises.
class Object {
public:
    Object() = default;
    /// Adds a reference to the object.
    explicit Object(IDispatch* object);
    /// A new object of the class, from a module in this process.
    explicit Object(const CLSID& classId);
    Object(Object&& other) noexcept;
    Object& operator=(Object&& other) noexcept;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    ~Object();

    Variant get(const wchar_t* member) const;
    /// A property with an argument, such as an item of a collection.
    Variant get(const wchar_t* member, const Variant& argument) const;
    void put(const wchar_t* member, const Variant& value) const;
    /// @param arguments  in the member's own order; the result is released and ignored
    void call(const wchar_t* member, std::initializer_list<const Variant*> arguments = {}) const;

    IDispatch* dispatch() const { return object_; }

private:
    DISPID idOf(const wchar_t* member) const;
    Variant invoke(const wchar_t* member, WORD kind, DISPPARAMS& parameters) const;

    IDispatch* object_ = nullptr;
    mutable std::vector<std::pair<const wchar_t*, DISPID>> ids_;
};

}  // namespace ado::com
