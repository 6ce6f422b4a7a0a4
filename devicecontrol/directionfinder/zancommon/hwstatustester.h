#pragma once

#include "zancommon_export.h"

#include <QString>

#include <set>

class ICfg;
class ValueDescriptor;
class ValueSelection;

/// Compares the hardware components that a DF device reports with those that are required and optional at
/// this station.
///
/// Names are case-sensitive. In texts they are separated by ";". The requirements are in the value tree while
/// the device runs, and in the station's settings between runs. Belongs to the application's main thread.
class ZANCOMMON_EXPORT HwStatusTester {
public:
    /// The state of a component with respect to the requirements.
    enum HwComponentState : int {
        RequiredMissing = 0,   ///< required, not installed
        RequiredInstalled = 1, ///< required and installed
        OptionalInstalled = 2, ///< optional and installed
        OptionalMissing = 3,   ///< optional, not installed
        NotRequired = 4        ///< neither required nor optional, installed or not
    };

    /// \param path the node of the device's values, such as "/ZANServer"
    explicit HwStatusTester(QString path);
    /// A copy tests the device of its source, but has no components yet.
    HwStatusTester(const HwStatusTester& other);
    HwStatusTester& operator=(const HwStatusTester& other);

    // The order of the virtual operations, their arguments and their constness are part of the interface.

    virtual ~HwStatusTester();
    /// Takes the requirements from the tree. A value that is missing there counts as empty or false.
    virtual void ReadHwRequirementsFromTree();
    /// Writes the requirements to the tree, whose observers are notified. Values that are missing there are
    /// not created.
    virtual void WriteHwRequirementsToTree() const;
    /// Takes the requirements from the settings of a station, which the caller keeps; null changes nothing.
    /// What is missing there counts as empty or false.
    virtual void ReadHwRequirementsFromCfg(ICfg* cfg);
    /// Writes the requirements to the settings of a station, which the caller saves and releases; null writes
    /// nothing.
    virtual void WriteHwRequirementsToCfg(ICfg* cfg) const;
    /// Adds the components in the tree's device information to those known as installed. An assertion is
    /// reported when that value is missing.
    virtual void ReadHwListFromTree();
    /// Adds the components in a device information: of each line the fourth of the fields, which are
    /// separated by ";". Lines that begin with ">>" or "Option", and those with fewer fields, name no
    /// component. Null adds nothing.
    virtual void ReadHwListFromValue(ValueSelection* info);
    /// Whether the operator may change the requirements; false at first.
    [[nodiscard]] virtual bool AreRequirementsEditable();
    virtual void SetRequirementsEditable(bool editable);
    /// Whether the operator is to be warned about missing components; false at first.
    [[nodiscard]] virtual bool GetCheckRequirements();
    virtual void SetCheckRequirements(bool check);
    /// Required components that are not installed.
    [[nodiscard]] virtual std::set<QString> FindMissingRequiredHardware() const;
    /// Installed components that are neither required nor optional.
    [[nodiscard]] virtual std::set<QString> FindUnknownHardware() const;
    /// Installed, required and optional components together.
    [[nodiscard]] virtual std::set<QString> GetAllComponents() const;
    /// These two replace the components; tree and settings are not changed.
    virtual void SetRequiredComponents(std::set<QString> components);
    virtual void SetOptionalComponents(std::set<QString> components);

    /// A component that is both required and optional counts as required.
    [[nodiscard]] HwComponentState GetComponentState(const QString& name) const;

private:
    ZANCOMMON_NO_EXPORT static QString HwSet2String(const std::set<QString>& components);
    ZANCOMMON_NO_EXPORT static std::set<QString> String2HwSet(const QString& text);

    template <class T>
    [[nodiscard]] T* GetValue(const ValueDescriptor& descriptor) const;

    QString m_valuePath;
    std::set<QString> m_installed;
    std::set<QString> m_required;
    std::set<QString> m_optional;
    bool m_requirementsEditable = false;
    bool m_checkRequirements = false;
};
