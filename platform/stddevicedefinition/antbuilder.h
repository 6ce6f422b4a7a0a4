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

/// Makes antenna nodes. Belongs to the thread of the value tree.
class ZANPLATFORM_EXPORT AntBuilder {
public:
    /// Makes a node of the antenna type with all its values at their defaults, as the last child of a node.
    /// Its name is "Ant" and the first number from 0 that is free there. Owned by the tree. Null, with
    /// a trace line, for a null parent, one that is being removed, and one below which there is no room;
    /// where there is room for the node only, its values are missing.
    static Node* InsertChild(Node* parent);
};

} // namespace StdDeviceDefinition
