#pragma once

#include "zancommon_export.h"

#include <QObject>
#include <QString>

class QWidget;

/// The base of the output interfaces: named sinks of DF results that can be switched on and off.
///
/// An interface may have a configuration widget, with which a user changes its settings. Everything belongs
/// to the application's main thread.
class ZANCOMMON_EXPORT ZANAbstractInterface : public QObject {
    Q_OBJECT

public:
    /// \param name the key by which `ZANInterfacesList` finds the interface; fixed from now on
    explicit ZANAbstractInterface(QString name);
    /// Does not delete the configuration widget: the class that creates one deletes it.
    ~ZANAbstractInterface() override;

    /// The same as `tr`, for sources from the time when `tr` did not take UTF-8.
    static QString trUtf8(const char* sourceText, const char* disambiguation = nullptr, int n = -1) {
        return tr(sourceText, disambiguation, n);
    }

    // The order of the virtual operations, their types and their constness are part of the interface.

    /// Sets the key prefix of the settings in the configuration store; empty at first.
    virtual void SetConfigPath(const QString& path);
    /// Switches the output on or off; what that means is up to the interface.
    virtual void SetEnabled(bool on) = 0;
    /// Whether the output is switched on; false at first.
    [[nodiscard]] virtual bool IsEnabled();
    /// The configuration widget; null when the interface has none, or when it has been destroyed. A window
    /// that shows it may take it over by becoming its parent.
    [[nodiscard]] virtual QWidget* GetConfigWidget();
    [[nodiscard]] virtual const QString GetName();

public Q_SLOTS:
    /// Forgets the configuration widget, which has been destroyed. Other objects are ignored. Connected to
    /// the `destroyed` signal of the widget by `AdoptConfigWidget`.
    void SlotOnConfigWidgetDestroyed(QObject* pObj);
    /// Takes over the values that the user entered in the configuration widget.
    virtual void SlotUpdateConfiguration() = 0;

protected:
    /// Sets the configuration widget, instead of an earlier one, and forgets it when it is destroyed. Null
    /// for none. Not owned: the derived class deletes the widget that it creates.
    void AdoptConfigWidget(QWidget* widget);

    /// Sets where the output goes, for example to a serial port or a file; empty at first.
    virtual void SetAddress(const QString& address);
    [[nodiscard]] virtual const QString GetAddress();

    QWidget* m_pConfigWidget = nullptr; // not owned
    QString m_strConfigPath;
    QString m_strAddress;
    QString m_strName;
    bool m_bEnabled = false;
};
