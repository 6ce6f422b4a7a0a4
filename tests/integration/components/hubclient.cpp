#include "mshclient/imshclientdll.h"
#include "valueframework/tree.h"

#include <QFile>
#include <QToolBar>

using namespace Qt::StringLiterals;

namespace {

int instanceCount = 0;

/// A client of the hub that notes its calls, one a line, in the file that ZAN_HUB_LOG names. When it is
/// started, it sets what ZAN_HUB_SETS says: the path of a value, a blank and its text.
class HubClient final : public IMshClientDll {
public:
    HubClient() { Note(u"created"_s); }
    ~HubClient() override { Note(u"destroyed"_s); }

    void MapValue(const QString& tag, const QString& path, const QString& algorithm) override {
        Note(u"MapValue "_s + tag + u' ' + path + u' ' + algorithm);
    }
    void SetHandoverValue(const QString& path) override { Note(u"SetHandoverValue "_s + path); }
    void SetHandoverPoolValue(const QString& path) override { Note(u"SetHandoverPoolValue "_s + path); }
    void MapSelectionValue(const QString& tag, const QString& path) override {
        Note(u"MapSelectionValue "_s + tag + u' ' + path);
    }
    void AttachToolBar(QToolBar* toolBar, int position) override {
        Note(u"AttachToolBar "_s + (toolBar ? toolBar->objectName() : u"none"_s) + u' ' +
             QString::number(position));
    }
    void SetReceiver(bool isReceiver) override {
        Note(isReceiver ? u"SetReceiver true"_s : u"SetReceiver false"_s);
    }
    void SetApplicationId(const QString& id) override { Note(u"SetApplicationId "_s + id); }
    void SetFrequencyRange(const QString& range) override { Note(u"SetFrequencyRange "_s + range); }
    void SetDeviceAddress(const QString& address) override { Note(u"SetDeviceAddress "_s + address); }
    void SetCentralAddress(const QString& address, int port) override {
        Note(u"SetCentralAddress "_s + address + u' ' + QString::number(port));
    }
    void SetAutoCoupleTargets(const QString& targets) override { Note(u"SetAutoCoupleTargets "_s + targets); }
    void Start() override {
        Note(u"Start"_s);
        const QString set = qEnvironmentVariable("ZAN_HUB_SETS");
        if (ValueBase* const value = Tree::Instance()->GetValue(set.section(u' ', 0, 0))) {
            value->SetStringValue(set.section(u' ', 1), nullptr);
        }
    }
    void SetClientName(const QString& name) override { Note(u"SetClientName "_s + name); }

private:
    void Note(const QString& call) const {
        QFile log(qEnvironmentVariable("ZAN_HUB_LOG"));
        if (log.open(QIODevice::Append)) {
            log.write((QString::number(m_number) + u' ' + call).trimmed().toUtf8() + '\n');
        }
    }

    const int m_number = ++instanceCount; // counted from 1 each time that the library is loaded
};

} // namespace

ZAN_DEFINE_COMPONENT(HubClient)
