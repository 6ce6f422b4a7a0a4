#pragma once

#include "zanserver_export.h"

#include "valueframework/valuetypes.h"

#include <QString>

namespace ZANServer {

/// Tells in the tree what has become of a wish that was not carried out as it was asked: the texts "Asked",
/// "CarriedOut" and "Reason" below a node. All three are empty while everything is carried out as asked.
/// Belongs to the thread of the tree.
class ZANSERVER_EXPORT WishReport {
public:
    /// \param wish the node's name, below "/ZANServer/Res/CtlR"
    explicit WishReport(QStringView wish);

    /// The reason is set last.
    /// \param carriedOut empty: it is not known what the device has
    void Tell(const QString& asked, const QString& carriedOut, const QString& reason);
    void Clear();

private:
    ValueString* m_asked;
    ValueString* m_carriedOut;
    ValueString* m_reason;
};

} // namespace ZANServer
