#pragma once

#include "valueframework/valuetypes.h"

#include <QString>

#include <functional>
#include <initializer_list>
#include <memory>

/// A static description of one value or node: its path below the base path, its type, and its first content.
/// It must outlive what is created from it. Belongs to the thread of the value tree.
class ZANPLATFORM_EXPORT ValueDescriptor {
public:
    /// Creates the value that the descriptor describes, without a name; empty for the descriptor of a node.
    using Maker = std::function<std::unique_ptr<ValueBase>()>;

    /// \param pathName path below the base path, with its slash in front ("/DevAttr/OperationMode")
    ValueDescriptor(QString pathName, Maker maker);
    ValueDescriptor(const ValueDescriptor&) = delete;
    ValueDescriptor& operator=(const ValueDescriptor&) = delete;

    /// The path relative to the base path.
    [[nodiscard]] QString PathName() const { return m_pathName; }
    /// The last component of the path name.
    [[nodiscard]] QString GetName() const;
    /// A new value as the descriptor describes it, outside the tree; null for the descriptor of a node.
    [[nodiscard]] std::unique_ptr<ValueBase> MakeValue() const;

    /// Creates the value or node at the base path plus the path name. A value that exists there already is
    /// returned as it is, whatever its type. Null for a node, and when nothing could be created. Owned by the
    /// tree, which keeps the address of the descriptor. Nobody observes a new value, so the originator makes
    /// no difference.
    ValueBase* Create(IObserver* originator = nullptr) const;
    /// The same below a given path instead of the base path, with or without a slash at its end.
    ValueBase* CreateBelow(const QString& base, IObserver* originator = nullptr) const;

    /// The process-wide base path against which `Create` resolves descriptors; empty at first. A slash at its
    /// end is removed. Nothing else is checked. New code uses `CreateBelow` with a path, so that it does not
    /// depend on who set this one last.
    static void SetBasePath(const QString& path);
    [[nodiscard]] static QString GetBasePath();

private:
    QString m_pathName;
    Maker m_maker;
};

/// Makers of the common types, for tables of descriptors. Ranges include their bounds, as in `ValueNumeric`;
/// nothing is checked.
namespace MakeDefault {

ZANPLATFORM_EXPORT ValueDescriptor::Maker Bool(bool content = false);
ZANPLATFORM_EXPORT ValueDescriptor::Maker Int(int content, int min, int max, int step = 1);
/// An integer without a range.
ZANPLATFORM_EXPORT ValueDescriptor::Maker Int(int content = 0);
ZANPLATFORM_EXPORT ValueDescriptor::Maker Double(double content, double min, double max, double step);
/// A number without a range.
ZANPLATFORM_EXPORT ValueDescriptor::Maker Double(double content = 0.0);
ZANPLATFORM_EXPORT ValueDescriptor::Maker Text(const QString& content = {});
/// Milliseconds since 1970-01-01 00:00:00 UTC, 0 at first.
ZANPLATFORM_EXPORT ValueDescriptor::Maker TimeStamp();
/// A selection with the first item current; the items are copied.
ZANPLATFORM_EXPORT ValueDescriptor::Maker Selection(std::initializer_list<SelItemDesc> items);
/// A bearing in which no member holds a value.
ZANPLATFORM_EXPORT ValueDescriptor::Maker Bearing();
ZANPLATFORM_EXPORT ValueDescriptor::Maker BearingList();
ZANPLATFORM_EXPORT ValueDescriptor::Maker TextList();
/// A node.
ZANPLATFORM_EXPORT ValueDescriptor::Maker Nothing();

} // namespace MakeDefault
