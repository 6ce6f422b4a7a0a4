#include "zancommon/selectionfiller.h"

#include "zancommon/zancharacteristics.h"
#include "zancommon/zancharacteristicstools.h"

#include <array>
#include <span>

using namespace Qt::StringLiterals;

namespace {

/// `toItem` creates the item for an element and its position.
template <class Elements, class ToItem>
void Fill(ValueSelection& selection, const Elements& elements, IObserver* observer, ToItem toItem) {
    const ValueTransaction transaction = selection.CreateTransaction({TChangeCode::Changed}, observer);
    selection.Clear(observer);
    long position = 0;
    for (const auto& element : elements) {
        selection.AddItem(toItem(element, position++), observer);
    }
}

} // namespace

void SelectionFiller::FillWithMethods(ValueSelection& selection, const std::list<EZANMethod>& methods,
                                      IObserver* observer) {
    const ZANCharacteristicsTools tools;
    Fill(selection, methods, observer, [&tools](EZANMethod method, long position) {
        return SelectionItem(tools.TranslateDfMethod(static_cast<unsigned long>(method)), 0.0, position);
    });
}

void SelectionFiller::FillWithPolarisations(ValueSelection& selection,
                                            const std::list<EZANPolarisation>& modes, IObserver* observer) {
    const ZANCharacteristicsTools tools;
    Fill(selection, modes, observer, [&tools](EZANPolarisation mode, long position) {
        return SelectionItem(tools.TranslatePolarisationMode(static_cast<unsigned long>(mode)), 0.0,
                             position);
    });
}

void SelectionFiller::FillWithBandwidths(ValueSelection* selection, const std::set<double>& bandwidths,
                                         IObserver* observer) {
    if (selection && !bandwidths.empty()) {
        Fill(*selection, bandwidths, observer, [](double bandwidth, long position) {
            return SelectionItem(ZANCharacteristics::FormatBandwidth(bandwidth, 2, false), bandwidth,
                                 position);
        });
    }
}

void SelectionFiller::FillWithAttenuations(ValueSelection* selection, int count, IObserver* observer) {
    static const std::array<SelectionItem, 4> attenuations{{
        {u"0 dB"_s, 0.0, 0},
        {u"12 dB"_s, 12.0, 12},
        {u"24 dB"_s, 24.0, 24},
        {u"30 dB"_s, 30.0, 30},
    }};
    if (selection) {
        const bool hasTwo = count == 0 || count == 2;
        Fill(*selection, std::span(attenuations).first(hasTwo ? 2 : attenuations.size()), observer,
             [](const SelectionItem& item, long /*position*/) { return item; });
    }
}
