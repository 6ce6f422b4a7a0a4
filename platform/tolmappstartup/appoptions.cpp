#include "tolmappstartup/appoptions.h"

#include "kwbase/tracesource.h"
#include "tolmappstartup/settingsformat.h"

#include <QHash>

using namespace Qt::StringLiterals;

namespace {

constexpr TraceSource TRACE(u"tolmappstartup\\appoptions");

QHash<QString, QString> options;

} // namespace

bool AppOptions::SetOption(const QString& text) {
    const qsizetype split = text.indexOf(u'=');
    const QString name = text.left(split).trimmed();
    if (name.isEmpty()) {
        return false;
    }
    options.insert(name, split < 0 ? u"true"_s : text.sliced(split + 1).trimmed());
    return true;
}

bool AppOptions::GetBoolean(const QString& name, bool defaultValue) {
    const auto option = options.constFind(name);
    if (option == options.constEnd()) {
        return defaultValue;
    }
    const std::optional<bool> value = ParseBoolean(*option);
    if (!value) {
        TRACE.Information([&] {
            return u"The application option \""_s + name + u"\" is \""_s + *option +
                   u"\", which is not a boolean; the default is used."_s;
        });
    }
    return value.value_or(defaultValue);
}

bool AppOptions::IsExisting(const QString& name) {
    return options.contains(name);
}
