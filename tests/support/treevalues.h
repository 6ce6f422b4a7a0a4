#pragma once

#include "valueframework/tree.h"
#include "valueframework/valuetypes.h"

#include <QString>

#include <memory>
#include <utility>

/// Inserts a value at a full path of the tree. Null when the tree refuses it.
inline ValueBase* InsertInTree(const QString& path, std::unique_ptr<ValueBase> value) {
    const qsizetype nameBegin = path.lastIndexOf(u'/') + 1;
    value->SetName(path.sliced(nameBegin), nullptr);
    return Tree::Instance()->InsertValue(path.first(nameBegin), std::move(value));
}

/// The same with a value that is made of this content.
template <class T, class... Content>
T* InsertInTree(const QString& path, Content... content) {
    return dynamic_cast<T*>(InsertInTree(path, std::unique_ptr<ValueBase>(std::make_unique<T>(content...))));
}
