#pragma once

#include "valueframework/node.h"
#include "valueframework/valuebase.h"

#include <QHash>

#include <memory>
#include <vector>

class QTextStream;

/// The value tree of the process: nodes and typed values under slash-separated paths.
///
/// A path begins with "/", has no empty component and at most `MAX_LEVELS` of them; one slash at the end of a
/// node's path is allowed. Any other text names nothing: looking it up gives null, inserting under it is
/// refused. Finding an item is one hash look-up, however many values there are, and allocates nothing.
///
/// The tree and everything in it belong to the application's main thread.
class ZANPLATFORM_EXPORT Tree {
public:
    /// The most components of a path.
    static constexpr int MAX_LEVELS = 100;

    /// The tree, created on first use; null only while the process is being torn down.
    static Tree* Instance();

    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    /// Joins the path of a node, with or without a slash at its end, and the path of an item below it, which
    /// begins with a slash.
    [[nodiscard]] static QString PathBelow(const QString& base, const QString& path);

    /// The value at the path, which has no slash at its end; null when there is none, or when the item there
    /// is a node. Owned by the tree.
    [[nodiscard]] ValueBase* GetValue(const QString& path) const { return m_values.value(path); }
    /// The value at the path when it is of type T (or of a type derived from T), else null.
    template <class T>
    [[nodiscard]] T* Find(const QString& path) const {
        return dynamic_cast<T*>(GetValue(path));
    }
    /// The node at the path; null when there is none. "/" is the root. Owned by the tree.
    [[nodiscard]] Node* GetNode(const QString& path) const;

    /// The node at the path; it and the nodes above it are created when they are missing. Null when the path
    /// is not valid, one of its components is a value, or a node on it is being removed.
    /// \param descriptor is kept in the node when that is created now, and must outlive it; may be null
    Node* CreateNode(const QString& path, const ValueDescriptor* descriptor = nullptr);
    /// Inserts a value under a parent path (with or without a slash at its end) and creates missing nodes. On
    /// success the tree takes the value over and returns it. Null when the value has no valid name, the name
    /// is taken, the path is not valid, one of its components is a value, or a node on it is being removed:
    /// the caller then keeps the value.
    ValueBase* InsertValue(const QString& parentPath, std::unique_ptr<ValueBase>&& value);
    /// Takes over a value that the tree refused and that nobody owns. It stays alive, outside the tree, until
    /// the process ends, so that nobody who has got a pointer to it is left with a dangling one.
    void Abandon(std::unique_ptr<ValueBase> value);

    /// Removes an item with everything below it. First every observer of the items is notified (code 2 for
    /// values, 18 for nodes, parents first) while all of them still exist; then they are destroyed. False for
    /// null, the root, an item that is not in the tree, and one that is being removed already.
    bool Remove(ITreeItem* item);
    /// Removes everything below the root in one removal. What observers insert meanwhile stays.
    void Clear();

    [[nodiscard]] qsizetype GetValueCount() const { return m_values.size(); }
    /// Writes one line per item in tree order: path, type, text of the value, number of observers, separated
    /// by tabs. Paths and texts are escaped as by `AppendEscaped`.
    void Dump(QTextStream& out) const;

private:
    friend class ValueBase;

    Tree() = default;
    ZANPLATFORM_NO_EXPORT ~Tree();

    /// Whether a new item can be inserted at a path that has no trailing slash.
    [[nodiscard]] ZANPLATFORM_NO_EXPORT bool IsFree(const QString& path) const;
    ZANPLATFORM_NO_EXPORT Node* InsertNode(Node* parent, const QString& path,
                                           const ValueDescriptor* descriptor);
    ZANPLATFORM_NO_EXPORT bool Rename(ValueBase* value, const QString& name);
    ZANPLATFORM_NO_EXPORT void RemoveAll(std::vector<ITreeItem*> items);
    ZANPLATFORM_NO_EXPORT void TakeOut(ITreeItem* item);

    static Tree* s_pInstance;

    // Two tables, so that finding a value never has to look at the item itself.
    QHash<QString, ValueBase*> m_values;
    QHash<QString, Node*> m_nodes;
    Node m_root;
    int m_removals = 0; // how many calls of Remove are in progress
    // The items that the calls of Remove in progress have taken out: kept until the last call ends, because
    // an observer may remove items that an outer call is still working on.
    std::vector<std::unique_ptr<ITreeItem>> m_removed;
    std::vector<std::unique_ptr<ValueBase>> m_abandoned;
};
