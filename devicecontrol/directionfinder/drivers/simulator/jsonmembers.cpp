#include "simulator/jsonmembers.h"

#include <cmath>
#include <utility>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

constexpr qsizetype LONGEST_TEXT = 200;

} // namespace

JsonMembers::JsonMembers(const QJsonValue& object, QString path, QString& error)
    : m_object(object.toObject())
    , m_path(std::move(path))
    , m_error(error) {
    if (!object.isObject() && m_error.isEmpty()) {
        m_error = (m_path.isEmpty() ? u"the document"_s : m_path) + u": is not an object"_s;
    }
}

double JsonMembers::Number(const QString& name, Limits limits) {
    if (!Has(name)) {
        Refuse(name, u"is missing"_s);
    }
    return Number(name, limits, limits.lowest);
}

double JsonMembers::Number(const QString& name, Limits limits, double fallback) {
    return OptionalNumber(name, limits).value_or(fallback);
}

std::optional<double> JsonMembers::OptionalNumber(const QString& name, Limits limits) {
    if (!Has(name)) {
        return {};
    }
    const QJsonValue value = Take(name);
    if (!value.isDouble()) {
        Refuse(name, u"is not a number"_s);
        return {};
    }
    const double number = value.toDouble();
    if (!(number >= limits.lowest && number <= limits.highest)) {
        constexpr int DIGITS = 12;
        Refuse(name, u"%1 is not within %2 to %3"_s.arg(number, 0, 'g', DIGITS)
                         .arg(limits.lowest, 0, 'g', DIGITS)
                         .arg(limits.highest, 0, 'g', DIGITS));
        return {};
    }
    return number;
}

double JsonMembers::WholeNumber(const QString& name, Limits limits, double fallback) {
    const double number = Number(name, limits, fallback);
    if (number != std::floor(number)) {
        Refuse(name, u"is not a whole number"_s);
        return fallback;
    }
    return number;
}

bool JsonMembers::Flag(const QString& name, bool fallback) {
    if (!Has(name)) {
        return fallback;
    }
    const QJsonValue value = Take(name);
    if (!value.isBool()) {
        Refuse(name, u"is neither true nor false"_s);
    }
    return value.toBool(fallback);
}

QString JsonMembers::Text(const QString& name) {
    const bool isThere = Has(name);
    QString text = Text(name, {});
    if (text.isEmpty()) {
        Refuse(name, isThere ? u"is empty"_s : u"is missing"_s);
    }
    return text;
}

QString JsonMembers::Text(const QString& name, const QString& fallback) {
    if (!Has(name)) {
        return fallback;
    }
    const QJsonValue value = Take(name);
    if (!value.isString()) {
        Refuse(name, u"is not a text"_s);
    } else if (value.toString().size() > LONGEST_TEXT) {
        Refuse(name, u"is longer than %1 characters"_s.arg(LONGEST_TEXT));
        return fallback;
    }
    return value.toString(fallback);
}

JsonMembers JsonMembers::Object(const QString& name) {
    return {Has(name) ? Take(name) : QJsonValue(QJsonObject()), PathOf(name), m_error};
}

QStringList JsonMembers::Texts(const QString& name, qsizetype most) {
    QStringList texts;
    const QJsonArray list = List(name, most);
    for (const auto& each : list) {
        if (!each.isString()) {
            Refuse(name, u"holds what is not a text"_s);
        }
        texts.append(each.toString());
    }
    return texts;
}

void JsonMembers::Refuse(const QString& name, const QString& reason) {
    if (m_error.isEmpty()) {
        m_error = PathOf(name) + u": "_s + reason;
    }
}

void JsonMembers::RefuseUnknown() {
    if (!m_object.isEmpty()) {
        Refuse(m_object.begin().key(), u"is not known"_s);
    }
}

QString JsonMembers::PathOf(const QString& name) const {
    return m_path.isEmpty() ? name : m_path + u'.' + name;
}

QJsonValue JsonMembers::Take(const QString& name) {
    return m_object.take(name);
}

QJsonArray JsonMembers::List(const QString& name, qsizetype most) {
    if (!Has(name)) {
        return {};
    }
    const QJsonValue value = Take(name);
    if (!value.isArray()) {
        Refuse(name, u"is not a list"_s);
        return {};
    }
    QJsonArray list = value.toArray();
    if (list.size() > most) {
        Refuse(name, u"holds %1, which is more than %2"_s.arg(list.size()).arg(most));
        return {};
    }
    return list;
}

} // namespace Simulator
