#include "zancommon/displayazimuth.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "valueframework/tree.h"
#include "valueframework/valuetypes.h"
#include "zancommon/zanpath.h"

using namespace StdDeviceDefinition;

bool DisplayAzimuth::Adjust(unsigned short& azimuth, int displayMode) {
    static const QString declinationPath = ZANPath::Server(g_vdDeclination);
    static const QString headingSourcePath = ZANPath::Server(g_vdHeaSource);
    const auto* const declinationValue = Tree::Instance()->Find<ValueNumericInt>(declinationPath);
    // The source of the heading makes no difference, but there must be such a selection.
    if (!declinationValue || !Tree::Instance()->Find<ValueSelection>(headingSourcePath)) {
        return false;
    }
    constexpr int HALF_CIRCLE = 1800;
    const int declination = static_cast<qint16>(declinationValue->GetValue());
    int adjusted = azimuth; // narrowed to 16 bits, as angles are stored, when it is brought into range
    switch (displayMode) {
    case 0:
        break;
    case 1:
        adjusted -= declination;
        break;
    case 2:
        adjusted += HALF_CIRCLE;
        break;
    case 3:
        adjusted += HALF_CIRCLE - declination;
        break;
    default:
        return false;
    }
    azimuth = static_cast<unsigned short>(ValidateAzimuthRange(static_cast<qint16>(adjusted)));
    return true;
}

int DisplayAzimuth::ValidateAzimuthRange(int azimuth) {
    constexpr int FULL_CIRCLE = 3600;
    const int remainder = azimuth % FULL_CIRCLE;
    return remainder < 0 ? remainder + FULL_CIRCLE : remainder;
}
