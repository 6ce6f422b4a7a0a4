#include "valueframework/tree.h"

#include "valueframework/streamformat.h"

#include <QTextStream>

#include <algorithm>
#include <utility>

namespace {

/// The path without a slash at its end; that of the root is empty.
QString WithoutTrailingSlash(const QString& path) {
    return path.endsWith(u'/') ? path.chopped(1) : path;
}

bool IsValidPath(const QString& path) {
    return path.startsWith(u'/') && !path.endsWith(u'/') && path.count(u'/') <= Tree::MAX_LEVELS &&
           !path.contains(QStringLiteral("//"));
}

/// All items from one on downwards, each parent before its children.
std::vector<ITreeItem*> Subtree(ITreeItem* top) {
    std::vector<ITreeItem*> items{top};
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (const auto* node = dynamic_cast<const Node*>(items[i])) {
            const QList<ITreeItem*> children = node->GetTreeItems();
            items.insert(items.end(), children.begin(), children.end());
        }
    }
    return items;
}

} // namespace

Tree* Tree::s_pInstance = nullptr;

Tree* Tree::Instance() {
    // The pointer outlives the tree, so that calls during the teardown of the process get null.
    struct Owner {
        Owner() { s_pInstance = new Tree; }
        Owner(const Owner&) = delete;
        Owner& operator=(const Owner&) = delete;
        ~Owner() { delete std::exchange(s_pInstance, nullptr); }
    };
    static const Owner owner;
    return s_pInstance;
}

Tree::~Tree() {
    // Nobody is notified any more. Level by level, so that a deep tree needs no deep recursion.
    const std::vector<ITreeItem*> items = Subtree(&m_root);
    for (std::size_t i = 1; i < items.size(); ++i) {
        delete items[i];
    }
}

QString Tree::PathBelow(const QString& base, const QString& path) {
    return WithoutTrailingSlash(base) + path;
}

Node* Tree::GetNode(const QString& path) const {
    if (Node* node = m_nodes.value(path)) {
        return node;
    }
    if (path == u'/') {
        return const_cast<Node*>(&m_root);
    }
    return path.endsWith(u'/') ? m_nodes.value(path.chopped(1)) : nullptr;
}

bool Tree::IsFree(const QString& path) const {
    return !m_values.contains(path) && !m_nodes.contains(path);
}

Node* Tree::CreateNode(const QString& path, const ValueDescriptor* descriptor) {
    const QString target = WithoutTrailingSlash(path);
    if (target.isEmpty()) {
        return path.isEmpty() ? nullptr : &m_root;
    }
    if (!IsValidPath(target)) {
        return nullptr;
    }
    Node* node = &m_root;
    for (qsizetype begin = 0; begin < target.size();) {
        qsizetype end = target.indexOf(u'/', begin + 1);
        end = end < 0 ? target.size() : end;
        const QString step = target.first(end);
        if (Node* existing = m_nodes.value(step)) {
            node = existing;
        } else {
            node = InsertNode(node, step, end == target.size() ? descriptor : nullptr);
        }
        if (!node || node->m_isBeingRemoved) {
            return nullptr;
        }
        begin = end;
    }
    return node;
}

Node* Tree::InsertNode(Node* parent, const QString& path, const ValueDescriptor* descriptor) {
    if (!IsFree(path)) {
        return nullptr;
    }
    auto node = std::make_unique<Node>();
    node->m_name = path.sliced(path.lastIndexOf(u'/') + 1);
    node->m_path = path;
    node->SetDescriptor(descriptor);
    parent->Append(node.get());
    return *m_nodes.insert(path, node.release());
}

ValueBase* Tree::InsertValue(const QString& parentPath, std::unique_ptr<ValueBase>&& value) {
    if (!value || parentPath.isEmpty()) {
        return nullptr;
    }
    const QString path = PathBelow(parentPath, u'/' + value->GetName());
    if (!IsValidPath(path) || !IsFree(path)) {
        return nullptr;
    }
    Node* parent = CreateNode(parentPath);
    if (!parent) {
        return nullptr;
    }
    value->m_path = path;
    parent->Append(value.get());
    return *m_values.insert(path, value.release());
}

void Tree::Abandon(std::unique_ptr<ValueBase> value) {
    m_abandoned.push_back(std::move(value));
}

bool Tree::Rename(ValueBase* value, const QString& name) {
    const QString path = value->GetParent()->GetPath() + u'/' + name;
    if (!IsValidPath(path) || !IsFree(path) || value->m_isBeingRemoved) {
        return false;
    }
    m_values.remove(value->m_path);
    m_values.insert(path, value);
    value->m_path = path;
    return true;
}

bool Tree::Remove(ITreeItem* item) {
    if (!item || !item->GetParent() || item->m_isBeingRemoved) {
        return false;
    }
    RemoveAll(Subtree(item));
    return true;
}

void Tree::RemoveAll(std::vector<ITreeItem*> items) {
    // Items that an outer call of Remove is working on are left to that call.
    std::erase_if(items, [](const ITreeItem* each) { return each->m_isBeingRemoved; });
    for (ITreeItem* each : items) {
        each->m_isBeingRemoved = true;
    }
    ++m_removals;
    for (ITreeItem* each : items) {
        each->AnnounceRemoval();
    }
    std::reverse(items.begin(), items.end()); // children before parents
    for (ITreeItem* each : items) {
        TakeOut(each);
    }
    if (--m_removals == 0) {
        // Destroying an item may start further removals.
        const auto removed = std::exchange(m_removed, {});
    }
}

void Tree::TakeOut(ITreeItem* item) {
    if (auto* value = dynamic_cast<ValueBase*>(item)) {
        if (ITreeItem* observer = value->GetDeleteObserver()) {
            observer->OnItemDeleted(value);
        }
        m_values.remove(item->m_path);
    } else {
        m_nodes.remove(item->m_path);
    }
    item->m_pParent->Unlink(item);
    item->m_path.clear();
    m_removed.emplace_back(item);
}

void Tree::Clear() {
    std::vector<ITreeItem*> items = Subtree(&m_root);
    items.erase(items.begin()); // the root stays
    RemoveAll(std::move(items));
}

void Tree::Dump(QTextStream& out) const {
    // Depth first: the children of a node follow it.
    std::vector<const ITreeItem*> open{&m_root};
    while (!open.empty()) {
        const ITreeItem& item = *open.back();
        open.pop_back();
        QString text;
        if (const auto* node = dynamic_cast<const Node*>(&item)) {
            for (const ITreeItem* child = node->m_pLast; child; child = child->m_pPrevious) {
                open.push_back(child);
            }
            if (node == &m_root) {
                continue;
            }
        } else if (const auto* value = dynamic_cast<const ValueBase*>(&item)) {
            AppendEscaped(text, value->GetStringValue());
        }
        QString path;
        AppendEscaped(path,
                      item.GetPath()); // NOLINT(clang-analyzer-core.CallAndMessage): the list holds no null
        out << path << '\t' << item.GetTypeName() << '\t' << text << '\t' << item.GetObserverCount() << '\n';
    }
}
