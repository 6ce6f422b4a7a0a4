#pragma once

#include <QHash>
#include <QString>

#include <memory>
#include <set>

class IDllInstance;
class QLibrary;

/// Loads component libraries from one directory, and unloads each with its last instance; a library that did
/// not create an instance stays loaded. Main thread.
class ComponentLoader {
public:
    /// False for a path that is not absolute; then no directory is set.
    bool SetDirectory(const QString& directory);
    [[nodiscard]] const QString& GetDirectory() const { return m_directory; }
    /// A new instance from a library of the directory; null, with a report, when that is not possible.
    IDllInstance* Create(const QString& fileName);
    /// Destroys an instance of `Create`; null and other pointers are refused and reported.
    void Destroy(IDllInstance* instance);
    /// Never unloads the library of an instance.
    void Keep(IDllInstance* instance);

private:
    /// The object of a library, which all of its instances share; a new one when there are no instances. With
    /// several QLibrary objects for one file, any of them would unload it.
    [[nodiscard]] std::shared_ptr<QLibrary> GetLibrary(const QString& path) const;

    QString m_directory;
    QHash<IDllInstance*, std::shared_ptr<QLibrary>> m_libraryOfInstance;
    std::set<std::shared_ptr<QLibrary>> m_kept;
};
