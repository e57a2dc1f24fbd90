#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

#include "platform/base/exception.h"
#include "platform/base/status.h"

/// An object of the platform layer (a document, a container, a list, the archive library), null when absent.
using zHandle = void*;

/// What every object behind a handle is. Born with one reference, which belongs to whoever constructed it.
class zObject {
  public:
    virtual ~zObject();
    zObject(const zObject&) = delete;
    zObject& operator=(const zObject&) = delete;

    /// The object behind `handle` when it is a `T`, else null. `handle` must be null or alive.
    template <typename T>
    static T* as(zHandle handle) {
        return dynamic_cast<T*>(static_cast<zObject*>(handle));
    }
    zHandle handle() { return this; }

    /// What the object is, for the leak report ("XML document").
    virtual const char* kind() const = 0;

  protected:
    zObject();

  private:
    friend zStatus zObject_Retain(zHandle handle);
    friend zStatus zObject_Destroy(zHandle handle);
    std::atomic<std::int32_t> references{1};
};

/// Adds a reference to a living object, atomically. zStatus_BadArgument for null or what is no living object.
zStatus zObject_Retain(zHandle handle);

/// Gives one reference back; with the last one the object goes, together with everything it owns. Null and
/// what is no living object (a handle destroyed before) are refused with zStatus_BadArgument, untouched.
zStatus zObject_Destroy(zHandle handle);

/// Writes one log entry for each object that is still alive ("leaked object: XML document"), the archive
/// library's own part of shutting down.
void zObject_ReportLeaks();

namespace Ta {

/// Shares an object: copies hold a reference each, the last one to go destroys the object.
template <typename Handle>
class Object {
  public:
    Object() = default;
    ~Object() {
        // A destructor cannot raise, and an object that is dead already needs nothing more.
        if (handle_ != nullptr) static_cast<void>(zObject_Destroy(handle_));
    }
    Object(const Object& other) : handle_(other.handle_) { retain(); }
    Object(Object&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}

    /// Releases what is held and shares what `other` holds. Raises Ta::Exception when releasing fails.
    Object& operator=(const Object& other) {
        Object copy(other);
        std::swap(handle_, copy.handle_);
        copy.release();
        return *this;
    }
    // It may raise, by the same rule.
    Object& operator=(Object&& other) {  // NOLINT(performance-noexcept-move-constructor)
        Object taken(std::move(other));
        std::swap(handle_, taken.handle_);
        taken.release();
        return *this;
    }
    /// Releases what is held and leaves the holder empty.
    Object& operator=(std::nullptr_t) { return *this = Object(); }

    /// Where an operation that constructs an object is to put its handle; what is held is released first.
    Handle* out() {
        release();
        return &handle_;
    }
    Handle get() const { return handle_; }

  private:
    void retain() {
        if (handle_ != nullptr) Check(zObject_Retain(handle_), "Ta::Object<void *>::Object");
    }
    void release() {
        if (handle_ == nullptr) return;
        Check(zObject_Destroy(std::exchange(handle_, nullptr)), "Ta::Object<void *>::operator =");
    }

    Handle handle_ = nullptr;
};

}  // namespace Ta
