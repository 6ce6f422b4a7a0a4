#include "valueframework/valuedescriptor.h"

#include "valueframework/tree.h"

#include <utility>
#include <vector>

namespace {

QString& BasePath() {
    static QString path;
    return path;
}

} // namespace

ValueDescriptor::ValueDescriptor(QString pathName, Maker maker)
    : m_pathName(std::move(pathName))
    , m_maker(std::move(maker)) {}

QString ValueDescriptor::GetName() const {
    return m_pathName.sliced(m_pathName.lastIndexOf(u'/') + 1);
}

std::unique_ptr<ValueBase> ValueDescriptor::MakeValue() const {
    return m_maker ? m_maker() : nullptr;
}

ValueBase* ValueDescriptor::Create(IObserver* originator) const {
    return CreateBelow(GetBasePath(), originator);
}

ValueBase* ValueDescriptor::CreateBelow(const QString& base, IObserver* originator) const {
    const QString path = Tree::PathBelow(base, m_pathName);
    Tree& tree = *Tree::Instance();
    if (ValueBase* existing = tree.GetValue(path)) {
        return existing;
    }
    std::unique_ptr<ValueBase> value = MakeValue();
    if (!value) {
        tree.CreateNode(path, this);
        return nullptr;
    }
    value->SetName(GetName(), originator);
    value->SetDescriptor(this);
    return tree.InsertValue(path.first(path.lastIndexOf(u'/') + 1), std::move(value));
}

void ValueDescriptor::SetBasePath(const QString& path) {
    BasePath() = Tree::PathBelow(path, {});
}

QString ValueDescriptor::GetBasePath() {
    return BasePath();
}

namespace MakeDefault {

ValueDescriptor::Maker Bool(bool content) {
    return [content] { return std::make_unique<ValueBool>(content); };
}

ValueDescriptor::Maker Int(int content, int min, int max, int step) {
    return [=] { return std::make_unique<ValueNumericInt>(content, min, max, step); };
}

ValueDescriptor::Maker Int(int content) {
    return Int(content, std::numeric_limits<int>::lowest(), std::numeric_limits<int>::max());
}

ValueDescriptor::Maker Double(double content, double min, double max, double step) {
    return [=] { return std::make_unique<ValueNumericDouble>(content, min, max, step); };
}

ValueDescriptor::Maker Double(double content) {
    return Double(content, std::numeric_limits<double>::lowest(), std::numeric_limits<double>::max(), 1.0);
}

ValueDescriptor::Maker Text(const QString& content) {
    return [content] { return std::make_unique<ValueString>(content); };
}

ValueDescriptor::Maker TimeStamp() {
    return [] { return std::make_unique<ValueTimeStamp>(); };
}

ValueDescriptor::Maker Selection(std::initializer_list<SelItemDesc> items) {
    return [table = std::vector<SelItemDesc>(items)] {
        auto selection = std::make_unique<ValueSelection>();
        SelItemDesc::AddItems(table.data(), static_cast<int>(table.size()), selection.get());
        return selection;
    };
}

ValueDescriptor::Maker Bearing() {
    return [] { return std::make_unique<ValueBearing>(); };
}

ValueDescriptor::Maker BearingList() {
    return [] { return std::make_unique<ValueBearingList>(); };
}

ValueDescriptor::Maker TextList() {
    return [] { return std::make_unique<ValueStringList>(); };
}

ValueDescriptor::Maker Nothing() {
    return {};
}

} // namespace MakeDefault
