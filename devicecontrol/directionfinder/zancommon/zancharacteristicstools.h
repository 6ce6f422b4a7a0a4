#pragma once

#include "zancommon_export.h"

#include <QString>

/// Converts DF methods and polarisations into the short names that the value tree, the antenna configuration
/// and the user interface use, and back. Names are compared case-sensitively. From any thread.
class ZANCOMMON_EXPORT ZANCharacteristicsTools {
public:
    ZANCharacteristicsTools() = default;
    ZANCharacteristicsTools(const ZANCharacteristicsTools&) = default;
    ZANCharacteristicsTools& operator=(const ZANCharacteristicsTools&) = default;
    virtual ~ZANCharacteristicsTools();

    /// Family name of an EZANMethod: the alphabetically first of its names. "Unknown" for another value.
    [[nodiscard]] QString TranslateDfMethod(unsigned long value) const;
    /// EZANMethod of a name; 0xFFFFFFFF for an unknown name.
    [[nodiscard]] unsigned long TranslateDfMethod(const QString& name) const;

    /// Name of an EZANPolarisation; an empty text for another value.
    [[nodiscard]] QString TranslatePolarisationMode(unsigned long value) const;
    /// EZANPolarisation of a name; 0xFFFFFFFF for an unknown name.
    [[nodiscard]] unsigned long TranslatePolarisationMode(const QString& name) const;
};
