#pragma once

#include "zancommon_export.h"

#include <QString>

#include <set>

class ICfg;
class ValueDescriptor;
class ValueSelection;

/// Compares the hardware components that a DF device reports with those that this station requires, and those
/// that it may have.
///
/// Names are case-sensitive. In texts, names stand with ";" between them. The requirements stand in the value
/// tree while the device runs, and in the station's settings between runs. Belongs to the application's main
/// thread.
class ZANCOMMON_EXPORT HwStatusTester {
public:
    /// How a component stands to the requirements.
    enum HwComponentState : int {
        RequiredMissing = 0,   ///< required, not installed
        RequiredInstalled = 1, ///< required and installed
        OptionalInstalled = 2, ///< optional and installed
        OptionalMissing = 3,   ///< optional, not installed
        NotRequired = 4        ///< neither required nor optional, installed or not
    };

    /// \param path the node below which the device's values stand, such as "/ZANServer"
    explicit HwStatusTester(QString path);
    /// A copy tests the device of its source, and knows no components yet.
    HwStatusTester(const HwStatusTester& other);
    HwStatusTester& operator=(const HwStatusTester& other);

    // The order of the virtual operations, their arguments and their constness are part of the interface.

    virtual ~HwStatusTester();
    /// Takes the requirements from the tree. A value that is missing there counts as empty and false.
    virtual void ReadHwRequirementsFromTree();
    /// Writes the requirements to the tree, whose observers are told. A value that is missing there is left
    /// out.
    virtual void WriteHwRequirementsToTree() const;
    /// Takes the requirements from the settings of a station, which stay the caller's; null changes nothing.
    /// What is missing there counts as empty and false.
    virtual void ReadHwRequirementsFromCfg(ICfg* cfg);
    /// Writes the requirements to the settings of a station, which stay the caller's to save and release;
    /// null writes nothing.
    virtual void WriteHwRequirementsToCfg(ICfg* cfg) const;
    /// Adds the components of the device information in the tree to those known as installed. An assertion is
    /// reported when it is missing.
    virtual void ReadHwListFromTree();
    /// Adds the components of a device information: of each line the fourth of its fields, which ";"
    /// separates. Lines that begin with ">>" or "Option", and those of fewer fields, tell of no component.
    /// Null adds nothing.
    virtual void ReadHwListFromValue(ValueSelection* info);
    /// Whether the operator may change the requirements; at first not.
    [[nodiscard]] virtual bool AreRequirementsEditable();
    virtual void SetRequirementsEditable(bool editable);
    /// Whether the operator is to be warned of missing components; at first not.
    [[nodiscard]] virtual bool GetCheckRequirements();
    virtual void SetCheckRequirements(bool check);
    /// Required components that are not installed.
    [[nodiscard]] virtual std::set<QString> FindMissingRequiredHardware() const;
    /// Installed components that are neither required nor optional.
    [[nodiscard]] virtual std::set<QString> FindUnknownHardware() const;
    /// Installed, required and optional components together.
    [[nodiscard]] virtual std::set<QString> GetAllComponents() const;
    /// These two replace the components; what is there in tree and settings stays.
    virtual void SetRequiredComponents(std::set<QString> components);
    virtual void SetOptionalComponents(std::set<QString> components);

    /// A component that is both required and optional counts as required.
    [[nodiscard]] HwComponentState GetComponentState(const QString& name) const;

private:
    static QString HwSet2String(const std::set<QString>& components);
    static std::set<QString> String2HwSet(const QString& text);

    template <class T>
    [[nodiscard]] T* GetValue(const ValueDescriptor& descriptor) const;

    QString m_valuePath;
    std::set<QString> m_installed;
    std::set<QString> m_required;
    std::set<QString> m_optional;
    bool m_requirementsEditable = false;
    bool m_checkRequirements = false;
};
