#include "tolmappstartup/plainfilename.h"

#include <algorithm>

bool IsPlainFileName(QStringView name) {
    const auto isForbidden = [](QChar c) {
        return c == u'/' || c == u'\\' || c.category() == QChar::Other_Control;
    };
    return !name.isEmpty() && name.isValidUtf16() && !name.contains(u"..") &&
           std::none_of(name.begin(), name.end(), isForbidden);
}
