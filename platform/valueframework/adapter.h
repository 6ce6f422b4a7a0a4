#pragma once

#include "valueframework/node.h"
#include "valueframework/valuedescriptor.h"

/// The base of typed accessors to the values of one node. Does not own the node; when the node is gone, every
/// value is null. Belongs to the thread of the value tree.
class ZANPLATFORM_EXPORT Adapter {
public:
    explicit Adapter(Node* node)
        : m_pNode(node) {}
    Adapter(const Adapter&) = default;
    Adapter& operator=(const Adapter&) = default;
    virtual ~Adapter();

    /// Null when there is none, or when it is gone.
    [[nodiscard]] Node* GetNode() const { return m_pNode.get(); }

    /// The child value that a descriptor names; owned by the tree. Null, with a trace line, when it is
    /// missing or not of type T.
    template <class T>
    [[nodiscard]] T* GetValue(const ValueDescriptor& descriptor) const {
        const Node* node = GetNode();
        T* value = node ? dynamic_cast<T*>(node->GetChildValue(&descriptor)) : nullptr;
        if (!value) {
            TraceMissing(descriptor);
        }
        return value;
    }

private:
    static void TraceMissing(const ValueDescriptor& descriptor);

    ZANPlatform::ObservablePtr<Node> m_pNode;
};
