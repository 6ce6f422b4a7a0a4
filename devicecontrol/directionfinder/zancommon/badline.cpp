#include "zancommon/badline.h"

#include <array>

namespace KvZANCommon {

QString GetReasonText(BadLine reason) {
    // In the order of the reasons.
    static constexpr std::array<QStringView, 11> TEXTS{u"wrong number of columns",
                                                       u"required value missing",
                                                       u"not a number",
                                                       u"not a finite number",
                                                       u"out of range",
                                                       u"time runs backwards",
                                                       u"NUL byte",
                                                       u"line too long",
                                                       u"other columns",
                                                       u"not a JSON object",
                                                       u"line cut short"};
    static_assert(TEXTS.size() == static_cast<std::size_t>(BadLine::COUNT));
    return TEXTS[static_cast<std::size_t>(reason)].toString();
}

} // namespace KvZANCommon
