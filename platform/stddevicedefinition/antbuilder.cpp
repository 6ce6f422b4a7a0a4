#include "stddevicedefinition/antbuilder.h"

#include "kwbase/tracesource.h"
#include "stddevicedefinition/stddevicedescriptors.h"
#include "valueframework/tree.h"

using namespace Qt::StringLiterals;

namespace StdDeviceDefinition {

bool StdDeviceTree::Ant::IsAntenna(const ITreeItem* item) {
    return item && item->GetDescriptor() == &g_vdNodeAnt;
}

Node* AntBuilder::InsertChild(Node* parent) {
    Tree& tree = *Tree::Instance();
    Node* antenna = nullptr;
    if (parent) {
        const QString pathWithoutNumber = parent->GetPath() + g_vdNodeAnt.PathName();
        int number = 0;
        QString path;
        do {
            path = pathWithoutNumber + QString::number(number++);
        } while (tree.GetNode(path) || tree.GetValue(path));
        antenna = tree.CreateNode(path, &g_vdNodeAnt);
    }
    if (antenna) {
        CreateBranch(EBranch::ANTENNA, antenna->GetPath());
    } else {
        // Source and line are fixed: every node that cannot be created is traced with them.
        constexpr TraceSource TRACE(u"valueframework\\valueclasses\\valueobservermacros");
        TRACE.Information(
            [] {
                return u"Could not create node according to value descriptor "_s + g_vdNodeAnt.PathName() +
                       u'.';
            },
            175);
    }
    return antenna;
}

} // namespace StdDeviceDefinition
