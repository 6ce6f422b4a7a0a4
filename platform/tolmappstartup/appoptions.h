#pragma once

#include "zanplatform_export.h"

#include <QString>

/// The options that the application was started with. They belong to the application's main thread.
class ZANPLATFORM_EXPORT AppOptions {
public:
    /// Sets an option from "NAME=VALUE", or from "NAME", which is a boolean that is true. A later text
    /// replaces an earlier one of the same name; names are case-sensitive. False, and no option, for a text
    /// without a name.
    static bool SetOption(const QString& text);
    /// The boolean of an option: "true" and "false" in any case, "1" and "0". The default when there is no
    /// such option, and, with a trace line, when its value is none of these.
    [[nodiscard]] static bool GetBoolean(const QString& name, bool defaultValue);
    [[nodiscard]] static bool IsExisting(const QString& name);
};
