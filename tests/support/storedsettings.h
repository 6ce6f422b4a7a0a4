#pragma once

#include "tolmappstartup/cfgcenter.h"

#include <gtest/gtest.h>

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

/// The application's settings in a file of a directory of their own.
class StoredSettings {
public:
    StoredSettings() { Reopen(); }
    StoredSettings(const StoredSettings&) = delete;
    StoredSettings& operator=(const StoredSettings&) = delete;
    ~StoredSettings() { EXPECT_TRUE(CfgCenter::Close()); }

    /// What the file holds when the program has ended; the store stays closed.
    [[nodiscard]] QString CloseAndRead() const {
        EXPECT_TRUE(CfgCenter::Close());
        return Read();
    }
    /// What the file holds.
    [[nodiscard]] QString Read() const {
        QFile file(Path());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
    /// Goes on with a file that was written by hand.
    void Write(const QByteArray& text) {
        EXPECT_TRUE(CfgCenter::Close());
        WriteBeside(text);
        Reopen();
    }
    /// Writes the file as another program does while this one runs.
    void WriteBeside(const QByteArray& text) const {
        QFile file(Path());
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(text), text.size());
    }
    /// What another run of the program finds.
    void Reopen() const { EXPECT_TRUE(CfgCenter::SetConfigDirectory(m_directory.path())); }
    [[nodiscard]] QString GetDirectory() const { return m_directory.path(); }

private:
    [[nodiscard]] QString Path() const { return m_directory.filePath(QStringLiteral("Application.ini")); }

    QTemporaryDir m_directory;
};
