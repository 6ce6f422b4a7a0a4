#pragma once

#include <QByteArray>
#include <QtGlobal>

/// Messages in the form of the system's journal: when standard error leads there, each line begins with its
/// priority, which the journal takes off again.
namespace Journal {

enum class Priority { Error, Warning, Info };

/// Whether standard error leads to the journal.
[[nodiscard]] bool IsUsed();
/// Whole lines, each with its priority in front when standard error leads to the journal; otherwise as they
/// are.
[[nodiscard]] QByteArray Mark(Priority priority, const QByteArray& lines);
/// The priority of Qt's messages of a type.
[[nodiscard]] Priority PriorityOf(QtMsgType type);

} // namespace Journal
