#pragma once

#include "kwbase/observable.h"
#include "valueframework/valueptr.h"
#include "valueframework/valuetypes.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

/// Tells the person at the terminal what has become of a wish that was not carried out as it was asked, and
/// what is wrong with the device: the reports below "/ZANServer/Res/CtlR", and the device's warnings.
class WishTeller final : public IObserver {
public:
    /// The reports have to be in the tree.
    /// \param asked the wishes that the person has named: of others it is not told that the driver does not
    ///        support them, for most drivers have but some
    explicit WishTeller(QStringList asked);
    WishTeller(const WishTeller&) = delete;
    WishTeller& operator=(const WishTeller&) = delete;
    ~WishTeller() override = default;

    void Update(Observable* subject, TChangeCode code) override;

private:
    struct Report {
        QString wish;
        ZANPlatform::ValuePtr<ValueString> asked;
        ZANPlatform::ValuePtr<ValueString> carriedOut;
        ZANPlatform::ValuePtr<ValueString> reason;
    };

    void Tell(const Report& report) const;
    void TellWarnings();

    const QStringList m_asked;
    std::vector<Report> m_reports;
    ZANPlatform::ValuePtr<ValueStringList> m_warnings;
    std::vector<QString> m_told;
};
