#pragma once

#include <utility>

namespace comdouble {

/// One counted reference to an object.
template <typename Object>
class Ref {
public:
    Ref() = default;
    explicit Ref(Object& object) : object_(&object) { object.AddRef(); }
    Ref(const Ref& other) : object_(other.object_) {
        if (object_ != nullptr) object_->AddRef();
    }
    Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Ref& operator=(Ref other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Ref() {
        if (object_ != nullptr) object_->Release();
    }

    Object* get() const { return object_; }
    Object* operator->() const { return object_; }
    Object& operator*() const { return *object_; }
    explicit operator bool() const { return object_ != nullptr; }

private:
    Object* object_ = nullptr;
};

}  // namespace comdouble
