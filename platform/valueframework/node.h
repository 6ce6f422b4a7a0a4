#pragma once

#include "valueframework/itreeitem.h"

#include <QList>

class ValueBase;

/// A node of the value tree: holds values and further nodes in the order in which they were inserted. The
/// tree owns it; its observers are notified with `TChangeCode::NodeGoingAway` before it is removed.
class ZANPLATFORM_EXPORT Node final : public ITreeItem {
public:
    /// The value that a descriptor names below this node (its path name is taken relative to the node). Null
    /// when absent, and for null. Owned by the tree.
    [[nodiscard]] ValueBase* GetChildValue(const ValueDescriptor* descriptor) const;
    /// The children in their order, as a copy of the list: it does not change when the tree is changed.
    [[nodiscard]] QList<ITreeItem*> GetTreeItems() const;
    [[nodiscard]] QString GetTypeName() const override;

private:
    friend class Tree;

    void AnnounceRemoval() override;
    ZANPLATFORM_NO_EXPORT void Append(ITreeItem* item);
    ZANPLATFORM_NO_EXPORT void Unlink(ITreeItem* item);

    ITreeItem* m_pFirst = nullptr;
    ITreeItem* m_pLast = nullptr;
};
