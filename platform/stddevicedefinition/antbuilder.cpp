#include "stddevicedefinition/antbuilder.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "valueframework/tree.h"

namespace StdDeviceDefinition {

bool StdDeviceTree::Ant::IsAntenna(const ITreeItem* item) {
    return item && item->GetDescriptor() == &g_vdNodeAnt;
}

Node* AntBuilder::InsertChild(Node* parent) {
    Tree& tree = *Tree::Instance();
    if (!parent) {
        return nullptr;
    }
    const QString pathWithoutNumber = parent->GetPath() + g_vdNodeAnt.PathName();
    int number = 0;
    QString path;
    do {
        path = pathWithoutNumber + QString::number(number++);
    } while (tree.GetNode(path) || tree.GetValue(path));
    Node* antenna = tree.CreateNode(path, &g_vdNodeAnt);
    if (antenna) {
        CreateBranch(EBranch::ANTENNA, path);
    }
    return antenna;
}

} // namespace StdDeviceDefinition
