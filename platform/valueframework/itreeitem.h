#pragma once

#include "kwbase/observable.h"

#include <QString>

class Node;
class ValueDescriptor;

/// An item of the value tree: a node or a value. It has a name and, once inserted, a path; the tree then owns
/// it. Belongs to the application's main thread.
class ZANPLATFORM_EXPORT ITreeItem : public Observable {
public:
    ITreeItem() = default;
    /// A copy has the name of its source, but is not in the tree and has no observers.
    ITreeItem(const ITreeItem& other)
        : ITreeItem() {
        m_name = other.m_name;
        m_pDescriptor = other.m_pDescriptor;
    }
    ITreeItem& operator=(const ITreeItem&) = delete;

    [[nodiscard]] const QString& GetName() const { return m_name; }
    /// The full path, such as "/ZANServer/Res/DfR/Azimuth"; empty while the item is not in the tree.
    [[nodiscard]] const QString& GetPath() const { return m_path; }
    /// The node that holds the item; null while it is not in the tree.
    [[nodiscard]] Node* GetParent() const { return m_pParent; }
    /// The descriptor that the item was created from, or null. Not owned; it outlives the item.
    [[nodiscard]] const ValueDescriptor* GetDescriptor() const { return m_pDescriptor; }
    void SetDescriptor(const ValueDescriptor* descriptor) { m_pDescriptor = descriptor; }
    /// The type in words, for people.
    [[nodiscard]] virtual QString GetTypeName() const = 0;

    /// Called for the delete observer of a value (`ValueBase::SetDeleteObserver`) when the tree takes that
    /// value out to destroy it; the path of the value is still what it was.
    virtual void OnItemDeleted(ITreeItem* /*item*/) {}

protected:
    QString m_name;

private:
    friend class Node;
    friend class Tree;
    friend class ValueBase;

    /// Notifies the observers that the item is going away.
    virtual void AnnounceRemoval() = 0;

    QString m_path;
    Node* m_pParent = nullptr;
    ITreeItem* m_pPrevious = nullptr;
    ITreeItem* m_pNext = nullptr;
    const ValueDescriptor* m_pDescriptor = nullptr;
    bool m_isBeingRemoved = false;
};
