#pragma once

#include "valueframework/valuetypes.h"

#include <functional>
#include <memory>
#include <vector>

/// A value type with two makers of values that differ in content only.
struct ValueSample {
    const char* typeName; // as GetTypeName gives it
    ValueType type;
    std::function<std::unique_ptr<ValueBase>()> make;
    std::function<std::unique_ptr<ValueBase>()> makeOther;
};

template <class T, class... Arguments>
std::function<std::unique_ptr<ValueBase>()> MakerOf(Arguments... arguments) {
    return [=] { return std::make_unique<T>(arguments...); };
}

template <class T, class Element>
std::function<std::unique_ptr<ValueBase>()> ListMakerOf(std::initializer_list<Element> elements) {
    return [content = std::vector<Element>(elements)] {
        auto list = std::make_unique<T>();
        for (const Element& element : content) {
            list->PushBack(element, nullptr);
        }
        return list;
    };
}

inline std::function<std::unique_ptr<ValueBase>()> SelectionMaker(long currentKey) {
    return [currentKey] {
        auto selection = std::make_unique<ValueSelection>();
        selection->AddItem({QStringLiteral("first"), 1.5, 10}, nullptr);
        selection->AddItem({QStringLiteral("second"), 2.5, 20}, nullptr);
        selection->SetCurrentKey(currentKey, nullptr);
        return selection;
    };
}

inline BearingResult SampleBearing(quint16 azimuth) {
    BearingResult bearing;
    bearing.SetFrequency(121.5e6);
    bearing.SetLevel(-5204);
    bearing.SetAzimuth(azimuth);
    bearing.SetElevation(-15);
    bearing.SetQuality(97);
    bearing.SetTimeStamp(1'709'210'096'789ULL);
    return bearing;
}

inline TrafficControlFrequency SampleFrequency(int channel) {
    TrafficControlFrequency frequency;
    frequency.SetChannelID(channel);
    frequency.SetFrequency(118.025e6);
    frequency.SetIsAlarmChannel(true);
    return frequency;
}

/// One sample of each value type in use.
inline std::vector<ValueSample> ValueSamples() {
    return {
        {"Bool", ValueType::Bool, MakerOf<ValueBool>(true), MakerOf<ValueBool>(false)},
        {"Int", ValueType::Int, MakerOf<ValueInt>(-7), MakerOf<ValueInt>(8)},
        {"Double", ValueType::Double, MakerOf<Value<double, FormatFloat<double>>>(0.1),
         MakerOf<Value<double, FormatFloat<double>>>(0.2)},
        {"String", ValueType::String, MakerOf<ValueString>(QStringLiteral("a;b\tc\n\\%1")),
         MakerOf<ValueString>(QString())},
        {"TimeStamp", ValueType::TimeStamp, MakerOf<ValueTimeStamp>(1'709'210'096'789ULL),
         MakerOf<ValueTimeStamp>(~0ULL)},
        {"Int", ValueType::Int, MakerOf<ValueNumericInt>(5, 0, 10, 2), MakerOf<ValueNumericInt>(6, 0, 10, 2)},
        {"Double", ValueType::Double, MakerOf<ValueNumericDouble>(0.5, 0.0, 1.0, 0.1),
         MakerOf<ValueNumericDouble>(1.0, 0.0, 1.0, 0.1)},
        {"Selection", ValueType::Selection, SelectionMaker(20), SelectionMaker(10)},
        {"Bearing", ValueType::Bearing, MakerOf<ValueBearing>(SampleBearing(3599)),
         MakerOf<ValueBearing>(BearingResult())},
        {"List", ValueType::List, ListMakerOf<ValueBearingList>({SampleBearing(1), SampleBearing(2)}),
         ListMakerOf<ValueBearingList>({SampleBearing(2), SampleBearing(1)})},
        {"List", ValueType::List, ListMakerOf<ValueQuadFloatList>({QuadFloat(1, -2.5, 0.1, 1e300)}),
         ListMakerOf<ValueQuadFloatList>({QuadFloat()})},
        {"List", ValueType::List, ListMakerOf<ValueTrafficControlFrequencyList>({SampleFrequency(-1)}),
         ListMakerOf<ValueTrafficControlFrequencyList>({SampleFrequency(2), SampleFrequency(3)})},
    };
}
