// Owners of things that are deleted by `DeleteThis`.
#pragma once

#include <kiln/object.h>

#include <memory>

struct DeleteThisCall {
    template <typename T>
    void operator()(T* thing) const noexcept {
        thing->DeleteThis();
    }
};

/// Owns a thing that nobody has taken a reference to, or an importer, exporter or the like: it goes
/// back to the module that made it.
template <typename T>
using OwnedPtr = std::unique_ptr<T, DeleteThisCall>;

/// An object as one of another class, for as long as this lives.
class ConvertedObject {
public:
    /// `source` may be null and outlives this.
    ConvertedObject(Object* source, TimeValue t, const Class_ID& id) {
        if (!source || !source->CanConvertToType(id)) return;
        object_ = source->ConvertToType(t, id);
        if (object_ != source) own_.reset(object_);
    }

    /// Null when the source cannot be one.
    Object* get() const noexcept { return object_; }

private:
    Object* object_ = nullptr;
    OwnedPtr<Object> own_;  // null when it is the source itself
};
