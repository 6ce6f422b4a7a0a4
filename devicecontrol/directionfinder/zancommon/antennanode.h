#pragma once

#include "stddevicedefinition/antbuilder.h"
#include "zancommon/antennadata.h"
#include "zancommon/zancharacteristicstools.h"

class Node;

/// One antenna in the value tree: a node of the antenna type and its values.
class AntennaNode {
public:
    /// Which values are read. A value that the node lacks leaves the field as it is.
    enum class EValues {
        IDENTITY, ///< what the antenna is: name, handle, coverage
        EDITABLE, ///< what an operator edits, and what the device reports together with it
        ALL
    };

    /// \param tools translate the names of methods; outlive this object
    AntennaNode(Node* node, const ZANCharacteristicsTools& tools)
        : m_node(node)
        , m_tools(tools) {}

    void Read(EValues values, AntennaData& antenna) const;
    /// Sets all values. Methods are appended to those that the node has.
    void Write(const AntennaData& antenna) const;

private:
    StdDeviceDefinition::StdDeviceTree::Ant m_node;
    const ZANCharacteristicsTools& m_tools;
};
