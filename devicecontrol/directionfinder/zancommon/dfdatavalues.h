#pragma once

#include "valueframework/valueptr.h"
#include "valueframework/valuetypes.h"
#include "zancommon/dfdatasentence.h"

#include <vector>

/// The values of the tree for the sentences of the DF data output. A missing value leaves its marker in the
/// sentence. A value that is no longer measured counts as missing: an old position must not pass as the
/// current one. Belongs to the thread of the value tree.
class DFDataValues {
public:
    /// Looks for the values that have not been found yet. The observer is notified of changes of the bearing
    /// and of the list of emitters.
    void Find(IObserver* observer);
    void LetGo() { *this = {}; }

    /// Whether a notice is from the bearing.
    [[nodiscard]] bool IsBearing(const Observable* subject) const { return m_bearing.Is(subject); }
    /// Lets go of the bearing when a notice announces that it is going away.
    /// \return whether it did
    bool LetGoOfBearingIfGoing(const Observable* subject, TChangeCode code) {
        return m_bearing.LetGoIfGoing(subject, code);
    }

    /// The bearing; when it is missing, one without any member.
    [[nodiscard]] BearingResult GetBearing() const;
    /// The resolved emitters in super-resolution mode; null in normal mode. Valid until the list changes.
    [[nodiscard]] const std::vector<BearingResult>* GetEmitters() const;
    /// Whether the operation mode is known and is not Standby.
    [[nodiscard]] bool IsOperating() const;

    /// The head of the sentence for a bearing, with the current heading.
    [[nodiscard]] DFDataSentence::Head MakeHead(const BearingResult& bearing) const;
    /// The tail of the sentence for a bearing, with the current attitude and position.
    [[nodiscard]] DFDataSentence::Tail MakeTail(const BearingResult& bearing) const;

private:
    using DoubleValue = Value<double, FormatFloat<double>>;

    ZANPlatform::ValuePtr<ValueBearing> m_bearing;
    ZANPlatform::ValuePtr<ValueInt> m_heading;
    ZANPlatform::ValuePtr<DoubleValue> m_altitude;
    ZANPlatform::ValuePtr<DoubleValue> m_roll;
    ZANPlatform::ValuePtr<DoubleValue> m_pitch;
    ZANPlatform::ValuePtr<ValueTimeStamp> m_positionTime;
    ZANPlatform::ValuePtr<DoubleValue> m_latitude;
    ZANPlatform::ValuePtr<DoubleValue> m_longitude;
    ZANPlatform::ValuePtr<ValueBearingList> m_emitters;
    ZANPlatform::ValuePtr<ValueSelection> m_superResolution;
    ZANPlatform::ValuePtr<ValueBase> m_emitterCount; // not part of a sentence
    ZANPlatform::ValuePtr<ValueSelection> m_operationMode;
};
