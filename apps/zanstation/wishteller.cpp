#include "zanstation/wishteller.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "valueframework/tree.h"
#include "zancommon/zanpath.h"
#include "zanserver/drivererrands.h"
#include "zanstation/console.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

WishTeller::WishTeller(QStringList asked)
    : m_asked(std::move(asked)) {
    const QString reports = ZANPath::Server(u"Res/CtlR");
    if (const Node* const node = Tree::Instance()->GetNode(reports)) {
        for (const ITreeItem* const wish : node->GetTreeItems()) {
            const QString path = reports + u'/' + wish->GetName() + u'/';
            Report& report = m_reports.emplace_back();
            report.wish = wish->GetName();
            report.asked.Find(path + u"Asked"_s);
            report.carriedOut.Find(path + u"CarriedOut"_s);
            report.reason.Find(path + u"Reason"_s, this);
        }
    }
    m_warnings.Find(ZANPath::Device(StdDeviceDefinition::g_vdDevWarnings), this);
}

void WishTeller::Update(Observable* subject, TChangeCode code) {
    for (Report& report : m_reports) {
        if (!report.reason.LetGoIfGoing(subject, code) && report.reason.Is(subject)) {
            Tell(report);
        }
    }
    if (!m_warnings.LetGoIfGoing(subject, code) && m_warnings.Is(subject)) {
        TellWarnings();
    }
}

void WishTeller::Tell(const Report& report) const {
    const QString& reason = report.reason->GetValue();
    const bool isOfInterest = reason != ZANServer::DRIVER_DOES_NOT_SUPPORT || m_asked.contains(report.wish);
    if (reason.isEmpty() || !isOfInterest || !report.asked || !report.carriedOut) {
        return;
    }
    const QString carriedOut = report.carriedOut->GetValue();
    Console::Warn(u"%1: asked for %2, %3: %4"_s.arg(
        report.wish, report.asked->GetValue(),
        carriedOut.isEmpty() ? u"not carried out"_s : u"carried out as "_s + carriedOut, reason));
}

void WishTeller::TellWarnings() {
    for (const QString& warning : m_warnings->GetElements()) {
        if (std::ranges::find(m_told, warning) == m_told.end()) {
            m_told.push_back(warning);
            Console::Warn(warning);
        }
    }
}
