#pragma once

#include "valueframework/adapter.h"

namespace StdDeviceDefinition {

/// The typed accessors of the standard device tree.
namespace StdDeviceTree {

/// The accessor of one antenna node: `GetValue<T>` with the g_vdAnt... descriptors. Frequencies are in Hz,
/// mounting and compass in degrees.
class ZANPLATFORM_EXPORT Ant : public Adapter {
public:
    using Adapter::Adapter;

    /// Whether an item of the tree is a node of the antenna type. False for null.
    [[nodiscard]] static bool IsAntenna(const ITreeItem* item);
};

} // namespace StdDeviceTree

/// Creates antenna nodes. Belongs to the thread of the value tree.
class ZANPLATFORM_EXPORT AntBuilder {
public:
    /// Creates a node of the antenna type with all its values at their defaults, as the last child of a node.
    /// Its name is "Ant" and the first free number from 0 on. Owned by the tree. Null, with a trace line, for
    /// a null parent, for one that is being removed, and where the tree may not become deeper
    /// (`Tree::MAX_LEVELS`). Where only the values would be too deep, the node is created without them.
    static Node* InsertChild(Node* parent);
};

} // namespace StdDeviceDefinition
