#pragma once

#include "kwbase/observable.h"

#include <QString>

class Node;
class ValueDescriptor;

/// What stands in the value tree: a node or a value. It has a name and, once inserted, a place; the tree then
/// owns it. Belongs to the application's main thread.
class ZANPLATFORM_EXPORT ITreeItem : public Observable {
public:
    ITreeItem() = default;
    /// A copy has the name of its source, but no place in the tree and no observers.
    ITreeItem(const ITreeItem& other)
        : ITreeItem() {
        m_name = other.m_name;
        m_pDescriptor = other.m_pDescriptor;
    }
    ITreeItem& operator=(const ITreeItem&) = delete;

    [[nodiscard]] const QString& GetName() const { return m_name; }
    /// The full path, such as "/ZANServer/Res/DfR/Azimuth"; empty while the item is not in the tree.
    [[nodiscard]] const QString& GetPath() const { return m_path; }
    /// The node that the item stands in; null while it is not in the tree.
    [[nodiscard]] Node* GetParent() const { return m_pParent; }
    /// The descriptor that the item was made from, or null. Not owned; it outlives the item.
    [[nodiscard]] const ValueDescriptor* GetDescriptor() const { return m_pDescriptor; }
    void SetDescriptor(const ValueDescriptor* descriptor) { m_pDescriptor = descriptor; }
    /// The type in words, for people.
    [[nodiscard]] virtual QString GetTypeName() const = 0;

    /// Told to the delete observer of a value (`ValueBase::SetDeleteObserver`) when the tree takes that value
    /// out to destroy it; its path still reads as it was.
    virtual void OnItemDeleted(ITreeItem* /*item*/) {}

protected:
    QString m_name;

private:
    friend class Node;
    friend class Tree;
    friend class ValueBase;

    /// Tells the observers that the item is going away.
    virtual void AnnounceRemoval() = 0;

    QString m_path;
    Node* m_pParent = nullptr;
    ITreeItem* m_pPrevious = nullptr;
    ITreeItem* m_pNext = nullptr;
    const ValueDescriptor* m_pDescriptor = nullptr;
    bool m_isBeingRemoved = false;
};
