#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <optional>

namespace Simulator {

/// The members of one object of a JSON document, each of them read once by its name.
///
/// The first thing that is wrong is kept with the path of the member ("emitters[3].frequency: ..."); what is
/// read then is a default. A member that nobody has asked for is wrong too.
class JsonMembers {
public:
    struct Limits {
        double lowest;
        double highest;
    };

    /// \param error shared by all objects of the document; empty as long as nothing is wrong
    JsonMembers(const QJsonValue& object, QString path, QString& error);

    [[nodiscard]] bool Has(const QString& name) const { return m_object.contains(name); }

    /// A number that has to be there.
    double Number(const QString& name, Limits limits);
    double Number(const QString& name, Limits limits, double fallback);
    std::optional<double> OptionalNumber(const QString& name, Limits limits);
    /// A number without fraction.
    double WholeNumber(const QString& name, Limits limits, double fallback);
    bool Flag(const QString& name, bool fallback);
    /// A text that has to be there, and is not empty.
    QString Text(const QString& name);
    QString Text(const QString& name, const QString& fallback);
    /// The members of an object; of an empty one when it is not there.
    JsonMembers Object(const QString& name);
    /// Calls with the members of each object of a list. No more of them than stated, or the list is refused.
    template <class Function>
    void ForEach(const QString& name, qsizetype most, Function function) {
        const QJsonArray list = List(name, most);
        for (qsizetype i = 0; i < list.size(); ++i) {
            JsonMembers members(list.at(i), PathOf(name) + u'[' + QString::number(i) + u']', m_error);
            function(members);
            members.RefuseUnknown();
        }
    }
    QStringList Texts(const QString& name, qsizetype most);

    void Refuse(const QString& name, const QString& reason);
    /// To be called last.
    void RefuseUnknown();

private:
    [[nodiscard]] QString PathOf(const QString& name) const;
    QJsonValue Take(const QString& name);
    QJsonArray List(const QString& name, qsizetype most);

    QJsonObject m_object; // what has not been read yet
    QString m_path;
    QString& m_error;
};

} // namespace Simulator
