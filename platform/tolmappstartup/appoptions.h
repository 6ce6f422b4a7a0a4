#pragma once

#include "zanplatform_export.h"

#include <QString>

/// The options that the application was started with. They belong to the application's main thread.
class ZANPLATFORM_EXPORT AppOptions {
public:
    /// Sets an option from "NAME=VALUE", or from "NAME", which sets the boolean to true. A later text
    /// replaces an earlier one of the same name; names are case-sensitive, and blanks around name and value
    /// are ignored. False, with no option set, for a text without a name.
    static bool SetOption(const QString& text);
    /// The boolean of an option: "true" and "false" in any case, "1" and "0". The default when there is no
    /// such option, and, with a trace line, when its value is none of these.
    [[nodiscard]] static bool GetBoolean(const QString& name, bool defaultValue);
    /// Whether an option of this name has been set, whatever its value.
    [[nodiscard]] static bool IsExisting(const QString& name);
};
