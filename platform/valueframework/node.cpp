#include "valueframework/node.h"

#include "valueframework/tree.h"
#include "valueframework/valuedescriptor.h"

using namespace Qt::StringLiterals;

ValueBase* Node::GetChildValue(const ValueDescriptor* descriptor) const {
    return descriptor ? Tree::Instance()->GetValue(GetPath() + descriptor->PathName()) : nullptr;
}

QList<ITreeItem*> Node::GetTreeItems() const {
    QList<ITreeItem*> items;
    for (ITreeItem* item = m_pFirst; item; item = item->m_pNext) {
        items.append(item);
    }
    return items;
}

QString Node::GetTypeName() const {
    return u"Node"_s;
}

void Node::AnnounceRemoval() {
    NotifyObservers(TChangeCode::NodeGoingAway, nullptr);
}

void Node::Append(ITreeItem* item) {
    item->m_pParent = this;
    item->m_pPrevious = m_pLast;
    (m_pLast ? m_pLast->m_pNext : m_pFirst) = item;
    m_pLast = item;
}

void Node::Unlink(ITreeItem* item) {
    (item->m_pPrevious ? item->m_pPrevious->m_pNext : m_pFirst) = item->m_pNext;
    (item->m_pNext ? item->m_pNext->m_pPrevious : m_pLast) = item->m_pPrevious;
    item->m_pParent = nullptr;
    item->m_pPrevious = nullptr;
    item->m_pNext = nullptr;
}
