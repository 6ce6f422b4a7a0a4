#pragma once

#include "tolmappstartup/cfgcenter.h"

#include <QDir>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

/// The directory in which the program looks for the hub's client, with the one of the tests that notes its
/// calls.
class HubClients {
public:
    HubClients() {
        qputenv("ZAN_HUB_LOG", m_directory.filePath(QStringLiteral("calls")).toUtf8());
        Install(QStringLiteral("libhubclient.so"));
    }

    /// Puts one of the libraries of the tests in the place of the client; an empty name: none.
    void Install(const QString& library) const {
        const QString directory = m_directory.filePath(QStringLiteral("components"));
        const QString client = directory + QStringLiteral("/libmshclient.so");
        ASSERT_TRUE(QDir().mkpath(directory));
        QFile::remove(client);
        if (!library.isEmpty()) {
            ASSERT_TRUE(QFile::copy(QStringLiteral(ZAN_TEST_COMPONENTS "/") + library, client));
        }
        ASSERT_TRUE(CfgCenter::SetComponentDirectory(directory));
    }
    /// The calls of the clients since the last time.
    QStringList TakeCalls() {
        QFile log(qEnvironmentVariable("ZAN_HUB_LOG"));
        QStringList calls;
        if (log.open(QIODevice::ReadOnly)) {
            calls = QString::fromUtf8(log.readAll()).split(QChar(u'\n'), Qt::SkipEmptyParts);
            log.remove();
        }
        return calls;
    }
    [[nodiscard]] QString GetDirectory() const { return m_directory.path(); }

private:
    QTemporaryDir m_directory;
};
