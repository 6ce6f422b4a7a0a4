#include "zanstation/antennajson.h"

using namespace Qt::StringLiterals;

QJsonObject AntennaJson::Describe(const AntennaData& antenna) {
    QJsonObject object{{u"name"_s, antenna.name},
                       {u"enabled"_s, antenna.enabled},
                       {u"lowest_hz"_s, antenna.minRange},
                       {u"highest_hz"_s, antenna.maxRange}};
    if (!antenna.converterTypeName.isEmpty()) {
        object[u"converter"_s] = antenna.converterTypeName;
    }
    return object;
}
