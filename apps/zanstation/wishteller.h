#pragma once

#include "kwbase/observable.h"
#include "valueframework/valueptr.h"
#include "valueframework/valuetypes.h"

#include <QString>

#include <memory>
#include <vector>

/// Tells the person at the terminal what has become of a wish that was not carried out as it was asked, and
/// what is wrong with the device: the reports below "/ZANServer/Res/CtlR", and the device's warnings.
class WishTeller final : public IObserver {
public:
    /// The reports have to be in the tree.
    WishTeller();
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

    static void Tell(const Report& report);
    void TellWarnings();

    std::vector<Report> m_reports;
    ZANPlatform::ValuePtr<ValueStringList> m_warnings;
    std::vector<QString> m_told;
};
