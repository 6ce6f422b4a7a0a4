#pragma once

#include "kwbase/errorhandler.h"
#include "kwbase/kwexception.h"
#include "valueframework/tree.h"
#include "valueframework/valuedescriptor.h"

#include <QString>

#include <memory>

/// \file
/// How the library finds and creates its values. Everything belongs to the thread of the value tree, and what
/// is returned is owned by the tree.

namespace ZANPlatform {

/// What the templates below call.
namespace ValueAccess {

/// Traces that the tree has refused a new value at this path.
ZANPLATFORM_EXPORT void TraceRefusedValue(const QString& path);
/// Throws the `KWException` of `CreateValue`.
[[noreturn]] ZANPLATFORM_EXPORT void ThrowWrongType(const ValueDescriptor& descriptor);

} // namespace ValueAccess

/// The value of type T at a path, created when it is missing. Null, with a trace line, when a value of
/// another type has that path already (it stays as it is), or when the path is not valid. A new value that
/// the tree refuses is kept until the process ends.
template <class T>
T* GetOrCreateValue(const QString& path) {
    Tree& tree = *Tree::Instance();
    if (T* existing = tree.Find<T>(path)) {
        return existing;
    }
    const qsizetype nameBegin = path.lastIndexOf(u'/') + 1;
    auto value = std::make_unique<T>();
    T* const inserted = value.get();
    value->SetName(path.sliced(nameBegin), nullptr);
    std::unique_ptr<ValueBase> offered = std::move(value);
    if (tree.InsertValue(path.first(nameBegin), std::move(offered))) {
        return inserted;
    }
    ValueAccess::TraceRefusedValue(path);
    tree.Abandon(std::move(offered));
    return nullptr;
}

/// Creates the value of a descriptor, of type T, below a path, or returns the one that exists already. Throws
/// `KWException` when that is of another type, or none could be created. Never null.
template <class T>
T* CreateValue(const QString& base, const ValueDescriptor& descriptor, IObserver* originator = nullptr) {
    if (T* value = dynamic_cast<T*>(descriptor.CreateBelow(base, originator))) {
        return value;
    }
    ValueAccess::ThrowWrongType(descriptor);
}

/// The same below the base path of the process, `ValueDescriptor::GetBasePath`.
template <class T>
T* CreateValue(const ValueDescriptor& descriptor, IObserver* originator = nullptr) {
    return CreateValue<T>(ValueDescriptor::GetBasePath(), descriptor, originator);
}

/// Creates the node of a descriptor, or returns the one that exists already at its path. Throws `KWException`
/// when it could not be created. Never null.
ZANPLATFORM_EXPORT Node* CreateNode(const ValueDescriptor& descriptor, IObserver* originator = nullptr);

} // namespace ZANPlatform
