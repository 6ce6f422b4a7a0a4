#pragma once

#include <QHash>
#include <QString>

#include <memory>

class IDllInstance;
class QLibrary;

/// Loads component libraries from one directory, and unloads each with its last instance; one that makes none
/// stays loaded. Main thread.
class ComponentLoader {
public:
    /// False for a path that is not absolute; then no directory is set.
    bool SetDirectory(const QString& directory);
    /// A new instance from a library of the directory; null when there is none to be had, which is reported.
    IDllInstance* Create(const QString& fileName);
    /// Destroys an instance of `Create`; null and other pointers are refused and reported.
    void Destroy(IDllInstance* instance);

private:
    /// The library that instances already come from, or a new object for it. The instances of a library share
    /// one object: those that QLibrary makes for the same file do not count each other, and any of them
    /// unloads it.
    [[nodiscard]] std::shared_ptr<QLibrary> GetLibrary(const QString& path) const;

    QString m_directory;
    QHash<IDllInstance*, std::shared_ptr<QLibrary>> m_libraryOfInstance;
};
