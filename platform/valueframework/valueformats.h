#pragma once

#include "valueframework/bearingresult.h"
#include "valueframework/quadfloat.h"
#include "valueframework/trafficcontrolfrequency.h"
#include "valueframework/valuebase.h"

#include <QLocale>
#include <QString>

#include <type_traits>
#include <utility>

/// \file
/// A format defines how a content type is written as text and when it has changed:
/// - `TYPE`: the type of a value with this content
/// - `ToString`: the text of a content
/// - `FromString`: reads a content; false, with the content unchanged, when the text is not valid
/// - `IsChange`: whether replacing the first by the second is a change that observers are notified of
///
/// The elements of a list need `ToString` and `FromString` only.
///
/// Formats do not depend on the language: numbers are written as in the "C" locale. From any thread.

namespace ZANPlatform {

/// Reads a decimal integer. False, with the number unchanged, when the text is not one or does not fit the
/// type.
template <class T>
bool ReadInteger(const QString& text, T& number) {
    bool isNumber = false;
    const auto wide = [&] {
        if constexpr (std::is_signed_v<T>) {
            return text.toLongLong(&isNumber);
        } else {
            return text.toULongLong(&isNumber);
        }
    }();
    // Qt stops reading at a NUL and ignores what follows.
    if (!isNumber || text.contains(QChar::Null) || !std::in_range<T>(wide)) {
        return false;
    }
    number = static_cast<T>(wide);
    return true;
}

} // namespace ZANPlatform

/// Written as "0" and "1"; "true" and "false", in any case, are read as well.
template <class T>
struct FormatBool {
    static constexpr ValueType TYPE = ValueType::Bool;
    static QString ToString(const T& content) { return content ? QStringLiteral("1") : QStringLiteral("0"); }
    static bool FromString(const QString& text, T& content) {
        const bool isTrue = text == u'1' || text.compare(QStringView(u"true"), Qt::CaseInsensitive) == 0;
        if (!isTrue && text != u'0' && text.compare(QStringView(u"false"), Qt::CaseInsensitive) != 0) {
            return false;
        }
        content = isTrue;
        return true;
    }
    static bool IsChange(const T& before, const T& after) { return before != after; }
};

/// A decimal integer.
template <class T>
struct FormatInt {
    static constexpr ValueType TYPE = ValueType::Int;
    static QString ToString(const T& content) { return QString::number(content); }
    static bool FromString(const QString& text, T& content) {
        return ZANPlatform::ReadInteger(text, content);
    }
    static bool IsChange(const T& before, const T& after) { return before != after; }
};

/// The shortest decimal text that reads back as the same number; infinities and "nan" are not read.
template <class T>
struct FormatFloat {
    static constexpr ValueType TYPE = ValueType::Double;
    static QString ToString(const T& content) {
        return QString::number(content, 'g', QLocale::FloatingPointShortest);
    }
    static bool FromString(const QString& text, T& content) {
        bool isNumber = false;
        const T number = text.toDouble(&isNumber);
        if (!isNumber || !qIsFinite(number)) {
            return false;
        }
        content = number;
        return true;
    }
    static bool IsChange(const T& before, const T& after) { return before != after; }
};

/// A text, unchanged.
template <class T>
struct FormatString {
    static constexpr ValueType TYPE = ValueType::String;
    static QString ToString(const T& content) { return content; }
    static bool FromString(const QString& text, T& content) {
        content = text;
        return true;
    }
    static bool IsChange(const T& before, const T& after) { return before != after; }
};

/// A time stamp in milliseconds since 1970-01-01 00:00:00 UTC, as a decimal number.
template <class T>
struct FormatTimeStamp {
    static constexpr ValueType TYPE = ValueType::TimeStamp;
    static QString ToString(const T& content) { return QString::number(content); }
    static bool FromString(const QString& text, T& content) {
        return ZANPlatform::ReadInteger(text, content);
    }
    static bool IsChange(const T& before, const T& after) { return before != after; }
};

/// The six members in their order and units (see `BearingResult`) separated by ","; a member without a
/// value is empty.
struct ZANPLATFORM_EXPORT FormatBearingResult {
    static constexpr ValueType TYPE = ValueType::Bearing;
    static QString ToString(const BearingResult& content);
    static bool FromString(const QString& text, BearingResult& content);
    /// Each bearing is an event of its own, also when it equals the one before: none may be lost.
    static bool IsChange(const BearingResult& /*before*/, const BearingResult& /*after*/) { return true; }
};

/// The four numbers separated by ",".
struct ZANPLATFORM_EXPORT QuadFloatFormat {
    static QString ToString(const QuadFloat& content);
    static bool FromString(const QString& text, QuadFloat& content);
};

/// Channel number, frequency (Hz) and alarm flag separated by ",".
struct ZANPLATFORM_EXPORT FormatTrafficControlFrequency {
    static QString ToString(const TrafficControlFrequency& content);
    static bool FromString(const QString& text, TrafficControlFrequency& content);
};
