#include "zancommon/dfdataoutput.h"

#include "support/eventloop.h"
#include "support/fifo.h"
#include "support/fulldisk.h"
#include "support/printing.h"
#include "support/pseudoterminal.h"
#include "support/standardoutput.h"
#include "support/tracelines.h"
#include "tolmappstartup/cfgcenter.h"
#include "valueframework/valueaccess.h"
#include "valueframework/valuetypes.h"

#include <QAbstractEventDispatcher>
#include <QCheckBox>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMetaMethod>
#include <QPointer>
#include <QSettings>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTimer>
#include <QTimerEvent>

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <limits>
#include <memory>
#include <vector>

using namespace Qt::StringLiterals;
using ZANPlatform::GetOrCreateValue;

namespace {

constexpr quint64 BEARING_TIME = 1527681600000;         // 12:00:00
constexpr quint64 POSITION_TIME = BEARING_TIME - 61000; // 11:58:59

// Of the lines that the output itself traces.
const QString ORIGIN = u"zancommon\\dfdataoutput("_s;

const QString BEARING = u"/ZANServer/Res/DfR/Azimuth"_s;
const QString HEADING = u"/ZANServer/Res/HeaR/TrueHeading"_s;
const QString ALTITUDE = u"/ZANServer/Res/PosR/Altitude"_s;
const QString ROLL = u"/ZANServer/Res/PosR/Roll"_s;
const QString PITCH = u"/ZANServer/Res/PosR/Pitch"_s;
const QString POSITION_UPDATE = u"/ZANServer/Res/PosR/PosLastUpdate"_s;
const QString LATITUDE = u"/ZANServer/Res/PosR/PosLatitude"_s;
const QString LONGITUDE = u"/ZANServer/Res/PosR/PosLongitude"_s;
const QString BEARING_LIST = u"/ZANServer/Res/DfR/AzimuthList"_s;
const QString SR_STATUS = u"/ZANServer/Par/Evt/SRStatus"_s;
const QString SR_COUNT = u"/ZANServer/Res/EvtR/SRNumEmitterResult"_s;
const QString MODE = u"/ZANServer/DevAttr/OperationMode"_s;

const QByteArray HEAD = "$PLG, 72.7,FRQ,1090000000,CMP,359.9,QUA, 90.0,LEV,-52.0,TIM,120000";
const QByteArray TAIL = ",ELV,2.4,PTC,-1.5,RLL,2.5,ALT,123.4,PTM,115859,LAT, 48.10000,LON,11.5000000";
const QByteArray LINE = HEAD + TAIL + "\r\n";
const QByteArray EMPTY_TAIL = ",ELV,0.0,PTC,0.0,RLL,0.0,ALT,0.0,PTM,,LAT,  0.00000,LON,0.0000000";
const QByteArray PLACE = "PTM,115859,LAT, 48.10000,LON,11.5000000";
const QByteArray NO_PLACE = "PTM,,LAT,  0.00000,LON,0.0000000";

/// A field of a sentence, and how it reads while its value is measured, and while it is lost or was never
/// there.
struct Field {
    QString path;
    QByteArray measured;
    QByteArray absent;
};
const std::vector<Field> FIELDS{
    {HEADING, "CMP,359.9", "CMP, -0.1"},
    {PITCH, "PTC,-1.5", "PTC,0.0"},
    {ROLL, "RLL,2.5", "RLL,0.0"},
    {ALTITUDE, "ALT,123.4", "ALT,0.0"},
    {POSITION_UPDATE, "PTM,115859", "PTM,"}, // a place that was set by hand
    {LATITUDE, PLACE, NO_PLACE},
    {LONGITUDE, PLACE, NO_PLACE},
};

BearingResult MakeBearing(qint16 quality = 90) {
    BearingResult bearing;
    bearing.SetFrequency(1090000000.0);
    bearing.SetLevel(-5204);
    bearing.SetAzimuth(727);
    bearing.SetElevation(24);
    bearing.SetQuality(quality);
    bearing.SetTimeStamp(BEARING_TIME);
    return bearing;
}

QByteArray Contents(const QString& name) {
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

void Overwrite(const QString& name, const QByteArray& bytes) {
    QFile file(name);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
}

/// Counts the timer events of an object.
class TimerEvents : public QObject {
public:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        count += event->type() == QEvent::Timer ? 1 : 0;
        return false;
    }

    int count = 0;
};

/// How many timers of an object are running.
qsizetype CountTimers(QObject& object) {
    return QAbstractEventDispatcher::instance()->registeredTimers(&object).size();
}

class DFDataOutputTest : public testing::Test {
public:
    DFDataOutputTest() {
        Tree::Instance()->Clear();
        EXPECT_TRUE(CfgCenter::SetConfigDirectory(m_directory.filePath(u"config"_s)));
        Store().SetString(u"FileOutput_Address"_s, m_fileName);
        Store().SetString(u"RS232Output_Address"_s, m_line.path + u":9600,e,8,1"_s);
    }
    ~DFDataOutputTest() override {
        m_output.reset();
        CfgCenter::Close();
    }

protected:
    static ICfg& Store() { return CfgCenter::GetAppCfg(ICfg::View::Outputs); }

    /// Fills the tree with all values that a sentence is made of, without super-resolution.
    static void FillTree() {
        Bearing().SetValue(MakeBearing(), nullptr);
        GetOrCreateValue<ValueNumericInt>(HEADING)->SetValue(3599, nullptr);
        GetOrCreateValue<ValueNumericDouble>(ALTITUDE)->SetValue(123.44, nullptr);
        GetOrCreateValue<ValueNumericDouble>(ROLL)->SetValue(2.5, nullptr);
        GetOrCreateValue<ValueNumericDouble>(PITCH)->SetValue(-1.5, nullptr);
        GetOrCreateValue<ValueTimeStamp>(POSITION_UPDATE)->SetValue(POSITION_TIME, nullptr);
        GetOrCreateValue<ValueNumericDouble>(LATITUDE)->SetValue(48.1, nullptr);
        GetOrCreateValue<ValueNumericDouble>(LONGITUDE)->SetValue(11.5, nullptr);
    }
    /// Turns super-resolution on with a number of emitters.
    static void FillSuperResolution(int count) {
        auto* status = GetOrCreateValue<ValueSelection>(SR_STATUS);
        for (const int key : {0, 1, 2}) {
            status->AddItem({QString::number(key), 0.0, key}, nullptr);
        }
        status->SetCurrentIndex(1, nullptr);
        auto* list = GetOrCreateValue<ValueBearingList>(BEARING_LIST);
        for (int i = 0; i < count; ++i) {
            BearingResult bearing = MakeBearing();
            bearing.SetAzimuth(static_cast<quint16>(100 * i));
            list->PushBack(bearing, nullptr);
        }
    }
    static ValueSelection& FillOperationMode(long key) {
        auto* mode = GetOrCreateValue<ValueSelection>(MODE);
        mode->AddItem({u"Off"_s, 0.0, 0}, nullptr);
        mode->AddItem({u"On"_s, 0.0, 7}, nullptr);
        mode->SetCurrentKey(key, nullptr);
        return *mode;
    }
    static ValueBearing& Bearing() { return *GetOrCreateValue<ValueBearing>(BEARING); }
    static void NewBearing(const BearingResult& bearing = MakeBearing()) {
        Bearing().SetValue(bearing, nullptr);
    }
    static std::size_t ObserversOf(const QString& path) {
        return Tree::Instance()->GetValue(path)->GetObserverCount();
    }
    static bool Remove(const QString& path) {
        return Tree::Instance()->Remove(Tree::Instance()->GetValue(path));
    }

    DFDataOutput& MakeOutput(bool toFile, bool toSerial, int interval = 0) {
        Store().SetBool(u"FileOutput_Enabled"_s, toFile);
        Store().SetBool(u"RS232Output_Enabled"_s, toSerial);
        Store().SetInt(u"Output_Interval"_s, interval);
        m_output = std::make_unique<DFDataOutput>(u"DF data"_s);
        if (toSerial) {
            EXPECT_TRUE(SpinUntil([this] { return !m_trace.lines.filter(u"OnOpen"_s).isEmpty(); }));
        }
        m_trace.lines.clear();
        return *m_output;
    }
    [[nodiscard]] QByteArray InFile() const { return Contents(m_fileName); }
    /// What arrives on the serial line until a number of bytes is there.
    [[nodiscard]] QByteArray OnLine(qsizetype count) const {
        QByteArray received;
        EXPECT_TRUE(SpinUntil([&] { return (received += m_line.Read()).size() >= count; }));
        return received;
    }
    /// Lets the output timer of an output fire some times.
    static void WaitForTimer(DFDataOutput& output) {
        TimerEvents events;
        output.installEventFilter(&events);
        ASSERT_TRUE(SpinUntil([&] { return events.count >= 3; }));
        output.removeEventFilter(&events);
    }

    /// The part of the panel in a row and a column.
    template <class Part>
    [[nodiscard]] Part* At(int row, int column) const {
        const auto* layout = qobject_cast<QGridLayout*>(m_output->GetConfigWidget()->layout());
        const QLayoutItem* item = layout ? layout->itemAtPosition(row, column) : nullptr;
        return item ? qobject_cast<Part*>(item->widget()) : nullptr;
    }
    [[nodiscard]] QCheckBox& SerialCheck() const { return *At<QCheckBox>(0, 0); }
    [[nodiscard]] QLineEdit& AddressEdit() const { return *At<QLineEdit>(0, 2); }
    [[nodiscard]] QCheckBox& FileCheck() const { return *At<QCheckBox>(1, 0); }
    [[nodiscard]] QLineEdit& FileNameEdit() const { return *At<QLineEdit>(1, 2); }
    [[nodiscard]] QSpinBox& IntervalSpin() const { return *At<QSpinBox>(2, 2); }

    QTemporaryDir m_directory;
    QString m_fileName = m_directory.filePath(u"output.txt"_s);
    TraceLines m_trace;
    PseudoTerminal m_line;
    std::unique_ptr<DFDataOutput> m_output;
};

// --- The sentence and where it goes -----------------------------------------------------------------------

TEST_F(DFDataOutputTest, NewBearingIsWrittenToTheFileWithHeadAndTail) {
    FillTree();
    const DFDataOutput& output = MakeOutput(true, false);
    NewBearing();
    EXPECT_EQ(InFile(), LINE);
    NewBearing();
    EXPECT_EQ(InFile(), LINE + LINE);
    EXPECT_EQ(output.GetCounters(), (DFDataOutput::Counters{.fileSentences = 2}));
    EXPECT_EQ(output.GetLastError(), QString());
}

TEST_F(DFDataOutputTest, SerialSentenceEndsAfterTheTimeWhileTheFileOutputIsOff) {
    FillTree();
    const DFDataOutput& output = MakeOutput(false, true);
    NewBearing();
    EXPECT_EQ(OnLine(HEAD.size() + 2), HEAD + "\r\n");
    EXPECT_FALSE(QFileInfo::exists(m_fileName));
    EXPECT_EQ(output.GetCounters(), (DFDataOutput::Counters{.serialSentences = 1}));
}

TEST_F(DFDataOutputTest, SerialSentenceHasTheTailWhileTheFileIsOpen) {
    FillTree();
    const DFDataOutput& output = MakeOutput(true, true);
    NewBearing();
    EXPECT_EQ(OnLine(LINE.size()), LINE);
    EXPECT_EQ(InFile(), LINE);
    EXPECT_EQ(output.GetCounters(), (DFDataOutput::Counters{.fileSentences = 1, .serialSentences = 1}));
}

TEST_F(DFDataOutputTest, LatitudeHasFiveDecimalsAndLongitudeSeven) {
    FillTree();
    MakeOutput(true, false);
    NewBearing();
    EXPECT_TRUE(InFile().endsWith(",LAT, 48.10000,LON,11.5000000\r\n"));
}

TEST_F(DFDataOutputTest, BearingOfQualityZeroMakesNoSentenceOfItsOwn) {
    FillTree();
    MakeOutput(true, false);
    for (const qint16 quality : std::initializer_list<qint16>{0, -1, -200, -4000}) {
        NewBearing(MakeBearing(quality));
    }
    EXPECT_EQ(InFile(), "");
    NewBearing(MakeBearing(1));
    EXPECT_EQ(InFile(), QByteArray(LINE).replace("QUA, 90.0", "QUA,  1.0"));
}

TEST_F(DFDataOutputTest, BearingOfQualityZeroHasNoAzimuthInAPeriodicSentence) {
    FillTree();
    NewBearing(MakeBearing(0));
    FillOperationMode(7);
    MakeOutput(true, false, 10);
    EXPECT_TRUE(SpinUntil([this] { return !InFile().isEmpty(); }));
    EXPECT_TRUE(InFile().startsWith("$PLG, -1.0,FRQ,1090000000,CMP,359.9,QUA,  0.0,LEV,-52.0,TIM,120000" +
                                    TAIL + "\r\n"));
}

TEST_F(DFDataOutputTest, AbsentValuesAreTheMarkersOfMissingData) {
    FillOperationMode(7);
    MakeOutput(true, false, 10);
    EXPECT_TRUE(SpinUntil([this] { return !InFile().isEmpty(); }));
    EXPECT_TRUE(InFile().startsWith("$PLG, -1.0,FRQ,         0,CMP, -0.1,QUA,  0.0,LEV, -0.5,TIM," +
                                    EMPTY_TAIL + "\r\n"));
}

TEST_F(DFDataOutputTest, ValuesThatAreNotMeasuredAnyMoreCountAsAbsent) {
    FillTree();
    MakeOutput(true, false);
    for (const QString& path : {HEADING, ALTITUDE, ROLL, PITCH, POSITION_UPDATE, LATITUDE, LONGITUDE}) {
        Tree::Instance()->GetValue(path)->SetState(TValueState::NotMeasured, nullptr);
    }
    NewBearing();
    EXPECT_EQ(InFile(), QByteArray(LINE)
                            .replace("359.9", " -0.1")
                            .replace(TAIL, QByteArray(EMPTY_TAIL).replace("ELV,0.0", "ELV,2.4")));
}

TEST_F(DFDataOutputTest, EachFieldReadsItsMarkerWhileItsValueIsLostAndItsValueWhenItIsBack) {
    FillTree();
    MakeOutput(true, false);
    QByteArray expected;
    for (const Field& field : FIELDS) {
        ValueBase& value = *Tree::Instance()->GetValue(field.path);
        for (int i = 0; i < 2; ++i) {
            value.SetState(TValueState::NotMeasured, nullptr);
            NewBearing();
            expected += QByteArray(LINE).replace(field.measured, field.absent);
            value.SetState(TValueState::Valid, nullptr);
            NewBearing();
            expected += LINE;
        }
    }
    EXPECT_EQ(InFile(), expected);
}

TEST_F(DFDataOutputTest, EachFieldWhoseValueWasNeverThereReadsItsMarker) {
    for (const Field& field : FIELDS) {
        FillTree();
        Remove(field.path);
        MakeOutput(true, false);
        NewBearing();
        EXPECT_EQ(InFile(), QByteArray(LINE).replace(field.measured, field.absent));
        m_output.reset();
    }
}

TEST_F(DFDataOutputTest, PositionComesBackWhenBothOfItsHalvesAreBack) {
    FillTree();
    MakeOutput(true, false);
    ValueBase& latitude = *Tree::Instance()->GetValue(LATITUDE);
    ValueBase& longitude = *Tree::Instance()->GetValue(LONGITUDE);
    const QByteArray lost = QByteArray(LINE).replace(PLACE, NO_PLACE);
    latitude.SetState(TValueState::NotMeasured, nullptr);
    longitude.SetState(TValueState::NotMeasured, nullptr);
    NewBearing();
    latitude.SetState(TValueState::Valid, nullptr);
    NewBearing();
    longitude.SetState(TValueState::Valid, nullptr);
    NewBearing();
    latitude.SetState(TValueState::NotMeasured, nullptr);
    NewBearing();
    EXPECT_EQ(InFile(), lost + lost + LINE + lost);
}

TEST_F(DFDataOutputTest, BearingThatIsNotMeasuredMakesNoSentence) {
    FillTree();
    Bearing().SetState(TValueState::NotMeasured, nullptr);
    MakeOutput(true, false);
    NewBearing();
    EXPECT_EQ(InFile(), "");
    Bearing().SetState(TValueState::Valid, nullptr);
    EXPECT_EQ(InFile(), LINE);
}

TEST_F(DFDataOutputTest, MembersThatABearingDoesNotHoldAreTheMarkersOfMissingData) {
    FillTree();
    MakeOutput(true, false);
    BearingResult bearing;
    bearing.SetQuality(5);
    NewBearing(bearing);
    EXPECT_EQ(InFile(), "$PLG, -1.0,FRQ,         0,CMP,359.9,QUA,  5.0,LEV, -0.5,TIM," +
                            QByteArray(TAIL).replace("ELV,2.4", "ELV,0.0") + "\r\n");
}

TEST_F(DFDataOutputTest, BearingWithoutAQualityMakesNoSentence) {
    FillTree();
    MakeOutput(true, false);
    BearingResult bearing;
    bearing.SetAzimuth(100);
    NewBearing(bearing);
    EXPECT_EQ(InFile(), "");
}

TEST_F(DFDataOutputTest, ValuesOfAnotherTypeAreLeftAlone) {
    Bearing();
    for (const QString& path : {HEADING, ALTITUDE, ROLL, PITCH, POSITION_UPDATE, LATITUDE, LONGITUDE,
                                BEARING_LIST, SR_STATUS, MODE}) {
        GetOrCreateValue<ValueString>(path)->SetValue(u"12"_s, nullptr);
    }
    MakeOutput(true, false);
    NewBearing();
    EXPECT_EQ(InFile(), QByteArray(LINE)
                            .replace("359.9", " -0.1")
                            .replace(TAIL, QByteArray(EMPTY_TAIL).replace("ELV,0.0", "ELV,2.4")));
}

TEST_F(DFDataOutputTest, PlainNumbersServeAsWellAsNumbersWithARange) {
    Bearing();
    GetOrCreateValue<ValueInt>(HEADING)->SetValue(3599, nullptr);
    GetOrCreateValue<Value<double, FormatFloat<double>>>(ALTITUDE)->SetValue(123.44, nullptr);
    MakeOutput(true, false);
    NewBearing();
    EXPECT_TRUE(InFile().contains(",CMP,359.9,"));
    EXPECT_TRUE(InFile().contains(",ALT,123.4,"));
}

// --- Super-resolution -------------------------------------------------------------------------------------

TEST_F(DFDataOutputTest, SuperResolutionWritesASentenceAnEmitterAndAnEmptyLineToTheFileOnly) {
    FillTree();
    FillSuperResolution(3);
    DFDataOutput& output = MakeOutput(true, true);
    NewBearing();
    QByteArray expected;
    for (const char* azimuth : {"  0.0", " 10.0", " 20.0"}) {
        const QByteArray number = QByteArray::number(expected.count('\n'));
        expected += QByteArray(HEAD).replace(" 72.7", azimuth) + TAIL + ",SR," + number + "\r\n";
    }
    EXPECT_EQ(InFile(), expected + "\r\n");
    EXPECT_EQ(output.GetCounters(), (DFDataOutput::Counters{.fileSentences = 3}));

    // The serial line takes the next one first: it had nothing before.
    GetOrCreateValue<ValueSelection>(SR_STATUS)->SetCurrentIndex(0, nullptr);
    NewBearing();
    EXPECT_EQ(OnLine(LINE.size()), LINE);
}

TEST_F(DFDataOutputTest, SuperResolutionWithOneEmitterIsOneSentenceAndAnEmptyLine) {
    FillTree();
    FillSuperResolution(1);
    MakeOutput(true, false);
    NewBearing();
    EXPECT_EQ(InFile(), QByteArray(HEAD).replace(" 72.7", "  0.0") + TAIL + ",SR,0\r\n\r\n");
}

TEST_F(DFDataOutputTest, SuperResolutionWithoutAnEmitterWritesNothing) {
    FillTree();
    FillSuperResolution(0);
    const DFDataOutput& output = MakeOutput(true, true);
    NewBearing();
    EXPECT_EQ(InFile(), "");
    EXPECT_EQ(output.GetCounters(), (DFDataOutput::Counters{.withoutEmitter = 1}));
}

TEST_F(DFDataOutputTest, SuperResolutionTakesFieldsOfTheEmitterAndTimeAndElevationOfTheCurrentBearing) {
    FillTree();
    FillSuperResolution(0);
    BearingResult emitter;
    emitter.SetFrequency(121500000.0);
    emitter.SetLevel(1000);
    emitter.SetAzimuth(1234);
    emitter.SetElevation(800);
    emitter.SetQuality(0); // no reason to hide the azimuth here
    emitter.SetTimeStamp(BEARING_TIME + 3600000);
    auto* list = GetOrCreateValue<ValueBearingList>(BEARING_LIST);
    list->PushBack(emitter, nullptr);
    list->PushBack(BearingResult(), nullptr);
    MakeOutput(true, false);
    NewBearing();
    EXPECT_EQ(InFile(), "$PLG,123.4,FRQ, 121500000,CMP,359.9,QUA,  0.0,LEV, 10.0,TIM,120000" + TAIL +
                            ",SR,0\r\n"
                            "$PLG, -1.0,FRQ,         0,CMP,359.9,QUA,  0.0,LEV, -0.5,TIM,120000" +
                            TAIL + ",SR,1\r\n\r\n");
}

TEST_F(DFDataOutputTest, WithoutAnOpenFileSuperResolutionIsNormalOutput) {
    FillTree();
    FillSuperResolution(3);
    MakeOutput(false, true);
    NewBearing();
    EXPECT_EQ(OnLine(HEAD.size() + 2), HEAD + "\r\n");
}

TEST_F(DFDataOutputTest, SuperResolutionNeedsStatusOneAndBothValues) {
    FillTree();
    FillSuperResolution(3);
    auto* status = GetOrCreateValue<ValueSelection>(SR_STATUS);
    MakeOutput(true, false);
    const auto expectNormal = [this] {
        const qsizetype before = InFile().size();
        NewBearing();
        EXPECT_EQ(InFile().mid(before), LINE);
    };
    for (const long index : {0L, 2L}) {
        status->SetCurrentIndex(index, nullptr);
        expectNormal();
    }
    status->SetCurrentIndex(1, nullptr);
    status->SetState(TValueState::NotMeasured, nullptr);
    expectNormal();
    status->SetState(TValueState::Valid, nullptr);
    Tree::Instance()->GetValue(BEARING_LIST)->SetState(TValueState::NotMeasured, nullptr);
    expectNormal();
    Remove(BEARING_LIST);
    expectNormal();
    Remove(SR_STATUS);
    expectNormal();
}

TEST_F(DFDataOutputTest, WalkOfTheBearingListByOthersIsNotDisturbed) {
    FillTree();
    FillSuperResolution(3);
    MakeOutput(true, false);
    auto* list = GetOrCreateValue<ValueBearingList>(BEARING_LIST);
    int steps = 0;
    for (list->ToBegin(); !list->IsLast() && steps < 10; ++steps) {
        NewBearing(list->Next());
    }
    EXPECT_EQ(steps, 3);
}

// --- What triggers a sentence -----------------------------------------------------------------------------

TEST_F(DFDataOutputTest, IntervalOfZeroStartsNoTimerAndOutputFollowsEachBearing) {
    FillTree();
    FillOperationMode(7);
    MakeOutput(true, false, 0);
    EXPECT_EQ(CountTimers(*m_output), 0);
    EXPECT_EQ(InFile(), "");
    NewBearing();
    EXPECT_EQ(InFile(), LINE);
}

TEST_F(DFDataOutputTest, RunningTimerDrivesTheOutputInsteadOfTheBearings) {
    FillTree();
    FillOperationMode(7);
    MakeOutput(true, false, 10000);
    EXPECT_EQ(CountTimers(*m_output), 1);
    NewBearing();
    EXPECT_EQ(InFile(), "");
    m_output.reset();
    MakeOutput(true, false, 10);
    EXPECT_TRUE(SpinUntil([this] { return InFile().startsWith(LINE + LINE + LINE); }));
}

TEST_F(DFDataOutputTest, PeriodicOutputNeedsAnOperationModeWithAKeyOtherThanZero) {
    FillTree();
    ValueSelection& mode = FillOperationMode(0);
    DFDataOutput& output = MakeOutput(true, false, 1);
    WaitForTimer(output);
    EXPECT_EQ(InFile(), "");
    mode.SetCurrentKey(7, nullptr);
    EXPECT_TRUE(SpinUntil([this] { return !InFile().isEmpty(); }));
    mode.SetState(TValueState::NotMeasured, nullptr);
    const QByteArray before = InFile();
    WaitForTimer(output);
    EXPECT_EQ(InFile(), before);
    mode.SetState(TValueState::Valid, nullptr);
    Remove(MODE);
    WaitForTimer(output);
    EXPECT_EQ(InFile(), before);
}

TEST_F(DFDataOutputTest, OperationModeCountsByItsKeyNotByItsPlace) {
    FillTree();
    auto& mode = *GetOrCreateValue<ValueSelection>(MODE);
    mode.AddItem({u"On"_s, 0.0, 7}, nullptr);
    mode.AddItem({u"Off"_s, 0.0, 0}, nullptr);
    mode.SetCurrentKey(0, nullptr);
    DFDataOutput& output = MakeOutput(true, false, 1);
    WaitForTimer(output);
    EXPECT_EQ(InFile(), "");
    mode.SetCurrentKey(7, nullptr);
    EXPECT_TRUE(SpinUntil([this] { return !InFile().isEmpty(); }));
}

TEST_F(DFDataOutputTest, TimersOfOthersDoNotDriveTheOutput) {
    FillTree();
    FillOperationMode(7);
    DFDataOutput& output = MakeOutput(true, false, 10000);
    QTimerEvent foreign(987654);
    QCoreApplication::sendEvent(&output, &foreign);
    EXPECT_EQ(InFile(), "");
    output.SetEnabled(false);
    QTimerEvent none(-1);
    output.SetEnabled(true);
    QCoreApplication::sendEvent(&output, &none);
    EXPECT_EQ(InFile(), "");
}

TEST_F(DFDataOutputTest, ChangesOfTheBearingListDoNotDriveTheOutput) {
    FillTree();
    FillSuperResolution(1);
    MakeOutput(true, false);
    GetOrCreateValue<ValueBearingList>(BEARING_LIST)->PushBack(MakeBearing(), nullptr);
    EXPECT_EQ(InFile(), "");
}

TEST_F(DFDataOutputTest, OtherNoticesOfTheBearingDoNotDriveTheOutput) {
    FillTree();
    MakeOutput(true, false);
    Bearing().HasChanged(TChangeCode::ListReplaced, nullptr);
    Bearing().HasChanged(TChangeCode::NodeGoingAway, nullptr);
    EXPECT_EQ(InFile(), "");
}

TEST_F(DFDataOutputTest, WhatSetsOffNoSentenceIsCountedWithItsReason) {
    using Counters = DFDataOutput::Counters;
    FillTree();
    ValueSelection& mode = FillOperationMode(7);
    {
        const DFDataOutput& output = MakeOutput(true, false);
        NewBearing(MakeBearing(0));
        NewBearing(MakeBearing(-200));
        NewBearing(BearingResult());
        NewBearing();
        EXPECT_EQ(output.GetCounters(), (Counters{.fileSentences = 1, .withoutQuality = 3}));
        m_output.reset();
    }
    {
        const DFDataOutput& output = MakeOutput(true, false, 10000); // longer than the run
        NewBearing();
        NewBearing();
        EXPECT_EQ(output.GetCounters(), (Counters{.leftToInterval = 2}));
        m_output.reset();
    }
    {
        mode.SetCurrentKey(0, nullptr);
        DFDataOutput& output = MakeOutput(true, false, 1);
        WaitForTimer(output);
        EXPECT_GE(output.GetCounters().inStandby, 3U);
        EXPECT_EQ(output.GetCounters().fileSentences, 0U);
        mode.SetCurrentKey(7, nullptr);
        const quint64 inStandby = output.GetCounters().inStandby;
        WaitForTimer(output);
        EXPECT_EQ(output.GetCounters().inStandby, inStandby);
        m_output.reset();
    }
    {
        FillSuperResolution(0);
        const DFDataOutput& output = MakeOutput(true, false);
        NewBearing();
        EXPECT_EQ(output.GetCounters(), (Counters{.withoutEmitter = 1}));
        m_output.reset();
    }
    {
        DFDataOutput& output = MakeOutput(false, false);
        NewBearing(); // while it is off, it is notified of none
        output.SetEnabled(true);
        NewBearing();
        EXPECT_EQ(output.GetCounters(), (Counters{.withoutSink = 1}));
    }
}

// --- The tree ---------------------------------------------------------------------------------------------

TEST_F(DFDataOutputTest, NothingIsCreatedInTheTree) {
    MakeOutput(true, false);
    EXPECT_EQ(Tree::Instance()->GetValueCount(), 0);
}

TEST_F(DFDataOutputTest, ObservesTheBearingAndTheListWhileItIsOnAndNothingElse) {
    FillTree();
    FillSuperResolution(1);
    FillOperationMode(7);
    GetOrCreateValue<ValueInt>(SR_COUNT);
    DFDataOutput& output = MakeOutput(true, false);
    EXPECT_EQ(ObserversOf(BEARING), 1U);
    EXPECT_EQ(ObserversOf(BEARING_LIST), 1U);
    for (const QString& path :
         {HEADING, ALTITUDE, ROLL, PITCH, POSITION_UPDATE, LATITUDE, LONGITUDE, SR_STATUS, SR_COUNT, MODE}) {
        EXPECT_EQ(ObserversOf(path), 0U);
    }
    output.SetEnabled(false);
    EXPECT_EQ(ObserversOf(BEARING), 0U);
    EXPECT_EQ(ObserversOf(BEARING_LIST), 0U);
}

TEST_F(DFDataOutputTest, BearingThatGoesAwayIsForgottenUntilTheNextSwitchOn) {
    FillTree();
    DFDataOutput& output = MakeOutput(true, false);
    EXPECT_TRUE(Remove(BEARING));
    NewBearing(); // another value at the same place
    EXPECT_EQ(InFile(), "");
    output.SetEnabled(false);
    output.SetEnabled(true);
    NewBearing();
    EXPECT_EQ(InFile(), LINE);
}

TEST_F(DFDataOutputTest, BearingIsNoLongerObservedWhenItIsAboutToGo) {
    FillTree();
    MakeOutput(true, false);
    Bearing().HasChanged(TChangeCode::GoingAway, nullptr);
    EXPECT_EQ(ObserversOf(BEARING), 0U);
    NewBearing();
    EXPECT_EQ(InFile(), "");
}

TEST_F(DFDataOutputTest, BearingThatIsAboutToGoIsAbsentFromAPeriodicSentence) {
    FillTree();
    FillOperationMode(7);
    MakeOutput(true, false, 10);
    Bearing().HasChanged(TChangeCode::GoingAway, nullptr);
    EXPECT_TRUE(SpinUntil([this] { return !InFile().isEmpty(); }));
    EXPECT_TRUE(InFile().startsWith("$PLG, -1.0,FRQ,         0,CMP,359.9,QUA,  0.0,LEV, -0.5,TIM,,ELV,0.0"));
}

TEST_F(DFDataOutputTest, ValuesThatGoAwayWhileItIsOnCountAsAbsent) {
    FillTree();
    FillSuperResolution(1);
    FillOperationMode(7);
    MakeOutput(true, false);
    for (const QString& path : {HEADING, ALTITUDE, ROLL, PITCH, POSITION_UPDATE, LATITUDE, LONGITUDE,
                                BEARING_LIST, SR_STATUS, MODE}) {
        EXPECT_TRUE(Remove(path));
    }
    NewBearing();
    EXPECT_EQ(InFile(), QByteArray(LINE)
                            .replace("359.9", " -0.1")
                            .replace(TAIL, QByteArray(EMPTY_TAIL).replace("ELV,0.0", "ELV,2.4")));
    Tree::Instance()->Clear();
}

// --- Switching on and off ---------------------------------------------------------------------------------

TEST_F(DFDataOutputTest, IsOnFromTheStartWhenOneOfTheSinksIsOn) {
    EXPECT_FALSE(MakeOutput(false, false).IsEnabled());
    m_output.reset();
    EXPECT_TRUE(MakeOutput(true, false).IsEnabled());
    m_output.reset();
    EXPECT_TRUE(MakeOutput(false, true).IsEnabled());
    EXPECT_EQ(m_output->GetName(), u"DF data"_s);
}

TEST_F(DFDataOutputTest, SwitchedOffOutputSendsNothing) {
    FillTree();
    FillOperationMode(7);
    for (const int interval : {0, 1}) {
        DFDataOutput& output = MakeOutput(true, true, interval);
        output.SetEnabled(false);
        const auto counters = output.GetCounters();
        NewBearing();
        EXPECT_EQ(CountTimers(output), 0);
        EXPECT_EQ(output.GetCounters(), counters);
        m_output.reset();
    }
}

TEST_F(DFDataOutputTest, SwitchingToTheStateThatItHasDoesNothing) {
    FillTree();
    DFDataOutput& output = MakeOutput(true, false);
    NewBearing();
    output.SetEnabled(true);
    NewBearing();
    EXPECT_EQ(InFile(), LINE + LINE);
    EXPECT_FALSE(QFileInfo::exists(m_fileName + u".bak"_s));
    output.SetEnabled(false);
    output.SetEnabled(false);
    EXPECT_FALSE(output.IsEnabled());
}

TEST_F(DFDataOutputTest, SwitchingOnAgainDoesNotLookForTheValuesAgain) {
    DFDataOutput& output = MakeOutput(true, false);
    FillTree();
    output.SetEnabled(true);
    NewBearing();
    EXPECT_EQ(InFile(), "");
}

TEST_F(DFDataOutputTest, SwitchedOnWithoutASinkItObservesAndSendsNothing) {
    FillTree();
    DFDataOutput& output = MakeOutput(false, false);
    output.SetEnabled(true);
    EXPECT_TRUE(output.IsEnabled());
    NewBearing();
    EXPECT_FALSE(QFileInfo::exists(m_fileName));
    EXPECT_EQ(output.GetCounters(), (DFDataOutput::Counters{.withoutSink = 1}));
}

TEST_F(DFDataOutputTest, CanBeDestroyedWhileItIsOn) {
    FillTree();
    FillSuperResolution(1);
    FillOperationMode(7);
    MakeOutput(true, true, 1);
    m_output.reset();
    EXPECT_EQ(ObserversOf(BEARING), 0U);
    NewBearing();
    QCoreApplication::processEvents();
}

// --- The file ---------------------------------------------------------------------------------------------

TEST_F(DFDataOutputTest, EachSwitchOnStartsAFreshFileAndKeepsExactlyOnePreviousOne) {
    FillTree();
    Overwrite(m_fileName, "first");
    Overwrite(m_fileName + u".bak"_s, "earliest");
    DFDataOutput& output = MakeOutput(true, false);
    EXPECT_EQ(InFile(), "");
    EXPECT_EQ(Contents(m_fileName + u".bak"_s), "first");
    NewBearing();
    output.SetEnabled(false);
    output.SetEnabled(true);
    EXPECT_EQ(InFile(), "");
    EXPECT_EQ(Contents(m_fileName + u".bak"_s), LINE);
    EXPECT_EQ(QDir(m_directory.path()).entryList({u"output*"_s}),
              QStringList({u"output.txt"_s, u"output.txt.bak"_s}));
    EXPECT_EQ(output.GetLastError(), QString());
}

TEST_F(DFDataOutputTest, EarlierBackupGoesAlsoWhenThereIsNoFileToReplaceIt) {
    Overwrite(m_fileName + u".bak"_s, "previous");
    MakeOutput(true, false);
    EXPECT_EQ(InFile(), "");
    EXPECT_FALSE(QFileInfo::exists(m_fileName + u".bak"_s)) << "a switch-on keeps the previous file only";
}

TEST_F(DFDataOutputTest, FileThatCannotBeMovedAwayIsAppendedToAndReported) {
    FillTree();
    Overwrite(m_fileName, "old\r\n");
    ASSERT_TRUE(QDir(m_directory.path()).mkpath(u"output.txt.bak/occupied"_s));
    Store().SetBool(u"FileOutput_Enabled"_s, true);
    m_output = std::make_unique<DFDataOutput>(u"DF data"_s);
    NewBearing();
    EXPECT_EQ(InFile(), "old\r\n" + LINE);
    const QString text = u"Could not move file "_s + m_fileName + u" to "_s + m_fileName + u".bak"_s;
    EXPECT_TRUE(m_output->GetLastError().startsWith(text)) << m_output->GetLastError().toStdString();
    EXPECT_EQ(m_trace.lines.filter(text).size(), 1);
}

TEST_F(DFDataOutputTest, FileThatCannotBeOpenedIsReportedAndTheSerialLineGoesOn) {
    FillTree();
    ASSERT_TRUE(QDir(m_directory.path()).mkpath(u"folder/occupied"_s));
    for (const QString& name :
         {m_directory.filePath(u"folder"_s), QString(), m_directory.filePath(u"missing%2/%1.txt"_s)}) {
        Store().SetString(u"FileOutput_Address"_s, name);
        Store().SetBool(u"FileOutput_Enabled"_s, true);
        Store().SetBool(u"RS232Output_Enabled"_s, true);
        m_output = std::make_unique<DFDataOutput>(u"DF data"_s);
        const QString text = u"Could not open file "_s + name + u": "_s;
        EXPECT_TRUE(m_output->GetLastError().startsWith(text)) << m_output->GetLastError().toStdString();
        EXPECT_GT(m_output->GetLastError().size(), text.size());
        EXPECT_EQ(m_trace.lines.filter(m_output->GetLastError()).size(), 1);
        EXPECT_TRUE(m_output->IsEnabled());
        m_trace.lines.clear();
        NewBearing();
        EXPECT_EQ(OnLine(HEAD.size() + 2), HEAD + "\r\n");
        EXPECT_EQ(m_output->GetCounters(), (DFDataOutput::Counters{.fileDropped = 1, .serialSentences = 1}));
        EXPECT_TRUE(m_trace.lines.filter(ORIGIN).isEmpty());
        m_output.reset();
    }
    EXPECT_TRUE(QFileInfo(m_directory.filePath(u"folder/occupied"_s)).isDir());
    EXPECT_FALSE(QFileInfo::exists(m_directory.filePath(u"folder.bak"_s)));
}

TEST_F(DFDataOutputTest, FullDiskIsReportedOnceAndAgainWhenThereIsRoomWhileTheSerialLineGoesOn) {
    FillTree();
    const DFDataOutput& output = MakeOutput(true, true);
    const QString text = u"Writing to "_s + m_fileName + u" failed: "_s;
    {
        const FullDisk disk(LINE.size());
        for (int i = 0; i < 4; ++i) {
            NewBearing();
        }
    }
    EXPECT_EQ(InFile(), LINE);
    EXPECT_EQ(OnLine(4 * LINE.size()), LINE + LINE + LINE + LINE);
    EXPECT_EQ(output.GetCounters(),
              (DFDataOutput::Counters{.fileSentences = 1, .fileDropped = 3, .serialSentences = 4}));
    EXPECT_TRUE(output.GetLastError().startsWith(text));
    EXPECT_GT(output.GetLastError().size(), text.size());
    EXPECT_EQ(m_trace.lines.filter(ORIGIN).size(), 1);
    EXPECT_EQ(m_trace.lines.filter(text).size(), 1);

    NewBearing();
    NewBearing();
    EXPECT_EQ(InFile(), LINE + LINE + LINE);
    EXPECT_EQ(output.GetCounters().fileSentences, 3U);
    EXPECT_EQ(m_trace.lines.filter(ORIGIN).size(), 2);
    EXPECT_TRUE(m_trace.lines.last().endsWith(u"Writing to "_s + m_fileName + u" works again"_s));
    EXPECT_TRUE(output.GetLastError().startsWith(text));
}

TEST_F(DFDataOutputTest, ProblemOfTheFileLastsUntilASentenceIsWrittenAgain) {
    FillTree();
    const DFDataOutput& output = MakeOutput(true, true);
    EXPECT_EQ(output.GetProblems(), QStringList());
    {
        const FullDisk disk(0);
        NewBearing();
    }
    ASSERT_EQ(output.GetProblems().size(), 1);
    EXPECT_TRUE(output.GetProblems().constFirst().startsWith(u"Writing to "_s + m_fileName + u" failed: "_s));
    NewBearing();
    EXPECT_EQ(output.GetProblems(), QStringList());
}

TEST_F(DFDataOutputTest, ProblemsOfBothSinksLastUntilTheOutputIsSwitchedOff) {
    FillTree();
    Store().SetString(u"FileOutput_Address"_s, m_directory.filePath(u"missing/output.txt"_s));
    Store().SetBool(u"FileOutput_Enabled"_s, true);
    Store().SetString(u"RS232Output_Address"_s, m_directory.filePath(u"noline:9600,n,8,1"_s));
    Store().SetBool(u"RS232Output_Enabled"_s, true);
    m_output = std::make_unique<DFDataOutput>(u"DF data"_s);
    NewBearing();
    const QStringList problems = m_output->GetProblems();
    ASSERT_EQ(problems.size(), 2);
    EXPECT_TRUE(problems[0].contains(u"missing/output.txt"_s));
    EXPECT_TRUE(problems[1].contains(u"noline"_s));
    m_output->SetEnabled(false);
    EXPECT_EQ(m_output->GetProblems(), QStringList());
}

TEST_F(DFDataOutputTest, FileHoldsWholeLinesOnlyWhenTheDiskIsFullInTheMiddleOfOne) {
    FillTree();
    const DFDataOutput& output = MakeOutput(true, false);
    {
        const FullDisk disk(2 * LINE.size() - 5);
        NewBearing();
        NewBearing();
        NewBearing();
    }
    EXPECT_EQ(InFile(), LINE);
    EXPECT_EQ(output.GetCounters(), (DFDataOutput::Counters{.fileSentences = 1, .fileDropped = 2}));
    EXPECT_EQ(m_trace.lines.size(), 1);
    NewBearing();
    EXPECT_EQ(InFile(), LINE + LINE);
}

TEST_F(DFDataOutputTest, FullDiskInSuperResolutionDropsTheSentencesThatDoNotFit) {
    FillTree();
    FillSuperResolution(3);
    const DFDataOutput& output = MakeOutput(true, false);
    const qint64 length = LINE.size() + 5; // with ",SR,0"
    {
        const FullDisk disk(length + 2);
        NewBearing();
    }
    EXPECT_EQ(InFile(), QByteArray(HEAD).replace(" 72.7", "  0.0") + TAIL + ",SR,0\r\n\r\n");
    EXPECT_EQ(output.GetCounters(), (DFDataOutput::Counters{.fileSentences = 1, .fileDropped = 2}));
    {
        const FullDisk disk(InFile().size() + 3 * length); // no room for the empty line
        NewBearing();
    }
    EXPECT_EQ(output.GetCounters(), (DFDataOutput::Counters{.fileSentences = 4, .fileDropped = 2}));
    EXPECT_TRUE(InFile().endsWith(",SR,2\r\n"));
    EXPECT_TRUE(m_trace.lines.last().contains(u"failed"_s));
}

TEST_F(DFDataOutputTest, FileThatCouldNotBeOpenedIsTriedAgainEvery5s) {
    FillTree();
    const QString name = m_directory.filePath(u"later/output.txt"_s);
    Store().SetString(u"FileOutput_Address"_s, name);
    const DFDataOutput& output = MakeOutput(true, false);
    QElapsedTimer timer;
    timer.start();
    NewBearing();
    ASSERT_TRUE(QDir(m_directory.path()).mkdir(u"later"_s));
    EXPECT_TRUE(SpinUntil([&name] { return QFileInfo::exists(name); }));
    EXPECT_GE(timer.elapsed(), 4500);
    NewBearing();
    EXPECT_EQ(Contents(name), LINE);
    EXPECT_EQ(output.GetCounters(), (DFDataOutput::Counters{.fileSentences = 1, .fileDropped = 1}));
    EXPECT_TRUE(m_trace.lines.last().endsWith(u"Writing to "_s + name + u" works again"_s));
}

TEST_F(DFDataOutputTest, SecondOutputToOneFileFailsAndTouchesNothing) {
    FillTree();
    Overwrite(m_fileName, "earlier");
    MakeOutput(true, false);
    NewBearing();
    const DFDataOutput second(u"second"_s);
    EXPECT_EQ(second.GetLastError(), u"Could not open file "_s + m_fileName +
                                         u": another output writes to it, or it is read as a recording"_s);
    NewBearing();
    EXPECT_EQ(InFile(), LINE + LINE);
    EXPECT_EQ(Contents(m_fileName + u".bak"_s), "earlier");
    EXPECT_EQ(second.GetCounters(), (DFDataOutput::Counters{.fileDropped = 1}));
}

TEST_F(DFDataOutputTest, SerialSentenceHasNoTailWhileAFifoHasNoReader) {
    FillTree();
    Fifo fifo(m_fileName);
    fifo.StartReading();
    const DFDataOutput& output = MakeOutput(true, true);
    NewBearing();
    EXPECT_EQ(fifo.Read(), LINE);
    EXPECT_EQ(OnLine(LINE.size()), LINE);
    fifo.StopReading();
    NewBearing(); // finds that out
    EXPECT_EQ(OnLine(LINE.size()), LINE);
    NewBearing();
    EXPECT_EQ(OnLine(HEAD.size() + 2), HEAD + "\r\n");
    EXPECT_EQ(output.GetCounters(),
              (DFDataOutput::Counters{.fileSentences = 1, .fileDropped = 2, .serialSentences = 3}));
    EXPECT_EQ(output.GetLastError(), u"Writing to "_s + m_fileName + u" failed: Broken pipe"_s);
}

TEST_F(DFDataOutputTest, FileOfThisRunIsWrittenInsteadOfTheOneInTheSettingsWhichStay) {
    FillTree();
    Overwrite(m_fileName, "untouched");
    const QString name = m_directory.filePath(u"run.txt"_s);
    for (const bool isFileOn : {false, true}) {
        Store().SetBool(u"FileOutput_Enabled"_s, isFileOn);
        m_output = std::make_unique<DFDataOutput>(u"DF data"_s, name);
        EXPECT_TRUE(m_output->IsEnabled());
        NewBearing();
        EXPECT_EQ(Contents(name), LINE);
        SerialCheck().click(); // what the panel changes does not end it
        m_output->SlotUpdateConfiguration();
        SerialCheck().click();
        m_output->SlotUpdateConfiguration();
        NewBearing();
        EXPECT_EQ(Contents(name), LINE);
        m_output.reset();
        EXPECT_EQ(Store().GetBool(u"FileOutput_Enabled"_s, !isFileOn), isFileOn);
        EXPECT_EQ(Store().GetString(u"FileOutput_Address"_s, {}), m_fileName);
        EXPECT_EQ(InFile(), "untouched");
    }
}

TEST_F(DFDataOutputTest, StandardOutputOfThisRunTakesSentencesAndNothingElse) {
    FillTree();
    const QString name = m_directory.filePath(u"stdout"_s);
    QFile target(name);
    ASSERT_TRUE(target.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered));
    {
        const StandardOutput replaced(target.handle());
        DFDataOutput output(u"DF data"_s, u"-"_s);
        NewBearing();
        output.SetEnabled(false);
        output.SetEnabled(true);
        NewBearing();
    }
    EXPECT_EQ(Contents(name), LINE + LINE); // no file to be kept as a previous one
    EXPECT_FALSE(QFileInfo::exists(u"-"_s));
    EXPECT_EQ(Store().GetString(u"FileOutput_Address"_s, {}), m_fileName);
}

TEST_F(DFDataOutputTest, FileThatTheOutputWouldWriteToOrReplaceIsKnownBeforehand) {
    const QString recording = m_directory.filePath(u"recording.csv"_s);
    const QString link = m_directory.filePath(u"link"_s);
    Overwrite(recording, "bearings");
    ASSERT_TRUE(QFile::link(recording, link));
    EXPECT_TRUE(DFDataOutput::TouchesFile(recording, recording));
    EXPECT_TRUE(DFDataOutput::TouchesFile(link, recording));
    EXPECT_TRUE(DFDataOutput::TouchesFile(recording, link));
    EXPECT_FALSE(DFDataOutput::TouchesFile(m_fileName, recording)); // which is not there yet
    EXPECT_FALSE(DFDataOutput::TouchesFile(recording + u".bak"_s, recording));

    const QString backup = m_fileName + u".bak"_s;
    ASSERT_TRUE(QFile::rename(recording, backup));
    EXPECT_TRUE(DFDataOutput::TouchesFile(m_fileName, backup));
    ASSERT_TRUE(QFile::remove(link) && QFile::link(backup, link));
    EXPECT_TRUE(DFDataOutput::TouchesFile(m_fileName, link));
    EXPECT_EQ(Contents(backup), "bearings");
}

TEST_F(DFDataOutputTest, FileThatIsNotThereYetIsTouchedByTheOutputThatWouldMakeIt) {
    const QString recording = m_directory.filePath(u"recording.csv"_s);
    EXPECT_TRUE(DFDataOutput::TouchesFile(recording, recording));
    EXPECT_TRUE(DFDataOutput::TouchesFile(recording, recording + u".bak"_s));
    EXPECT_FALSE(DFDataOutput::TouchesFile(recording + u".bak"_s, recording));
    EXPECT_FALSE(QFileInfo::exists(recording));
}

TEST_F(DFDataOutputTest, SentencesOfABurstAreWrittenTogetherWhenTheOutermostEnds) {
    FillTree();
    DFDataOutput& output = MakeOutput(true, true);
    {
        const DFDataOutput::Burst outer(output);
        {
            const DFDataOutput::Burst inner(output);
            NewBearing();
        }
        NewBearing();
        EXPECT_EQ(InFile(), "");
        EXPECT_EQ(OnLine(2 * LINE.size()), LINE + LINE);
        EXPECT_EQ(output.GetCounters(), (DFDataOutput::Counters{.serialSentences = 2}));
    }
    EXPECT_EQ(InFile(), LINE + LINE);
    EXPECT_EQ(output.GetCounters().fileSentences, 2U);
    NewBearing();
    EXPECT_EQ(InFile(), LINE + LINE + LINE);
}

TEST_F(DFDataOutputTest, BurstHoldsNoMoreThan64KiB) {
    FillTree();
    DFDataOutput& output = MakeOutput(true, false);
    const DFDataOutput::Burst burst(output);
    BearingResult far = MakeBearing();
    far.SetFrequency(10000000000.0); // whose line is one character longer
    const qsizetype count = 65536 / LINE.size();
    const qsizetype longer = 65536 % LINE.size();
    ASSERT_LT(longer, count);
    for (qsizetype i = 0; i < count; ++i) {
        EXPECT_EQ(InFile(), "");
        NewBearing(i < longer ? far : MakeBearing());
    }
    EXPECT_EQ(InFile().size(), 65536);
}

TEST_F(DFDataOutputTest, OutputThatIsSwitchedOffInABurstWritesWhatItHas) {
    FillTree();
    DFDataOutput& output = MakeOutput(true, false);
    {
        const DFDataOutput::Burst burst(output);
        NewBearing();
        output.SetEnabled(false);
        EXPECT_EQ(InFile(), LINE);
    }
    EXPECT_EQ(InFile(), LINE);
    EXPECT_EQ(output.GetCounters(), (DFDataOutput::Counters{.fileSentences = 1}));
}

TEST_F(DFDataOutputTest, FullDiskInABurstDropsTheSentencesThatDoNotFitAndTakesTheNextThatDoes) {
    FillTree();
    DFDataOutput& output = MakeOutput(true, false);
    BearingResult far = MakeBearing();
    far.SetFrequency(100000000000.0); // two digits more than there is room for
    {
        const FullDisk disk(3 * LINE.size());
        const DFDataOutput::Burst burst(output);
        NewBearing();
        NewBearing();
        NewBearing(far);
        NewBearing();
        NewBearing();
    }
    EXPECT_EQ(InFile(), LINE + LINE + LINE);
    EXPECT_EQ(output.GetCounters(), (DFDataOutput::Counters{.fileSentences = 3, .fileDropped = 2}));
    EXPECT_EQ(m_trace.lines.filter(u"failed"_s).size(), 2); // the long one, and the last one
    EXPECT_EQ(m_trace.lines.filter(u"works again"_s).size(), 1);
    {
        const DFDataOutput::Burst burst(output);
        NewBearing();
    }
    EXPECT_EQ(InFile(), LINE + LINE + LINE + LINE);
    EXPECT_TRUE(m_trace.lines.last().endsWith(u"works again"_s));
}

TEST_F(DFDataOutputTest, FailuresAreTracedOnlyWhenTheMaskWantsThem) {
    ErrorHandler::Instance().SetTraceMask(0);
    Store().SetString(u"FileOutput_Address"_s, m_directory.path());
    const DFDataOutput& output = MakeOutput(true, false);
    EXPECT_TRUE(m_trace.lines.isEmpty());
    EXPECT_FALSE(output.GetLastError().isEmpty());
}

// --- The serial line --------------------------------------------------------------------------------------

TEST_F(DFDataOutputTest, SerialLineThatIsNotThereIsReportedOnceAndTheFileGoesOn) {
    FillTree();
    Store().SetString(u"RS232Output_Address"_s, u"/dev/no-such-line:9600,e,8,1"_s);
    Store().SetBool(u"FileOutput_Enabled"_s, true);
    Store().SetBool(u"RS232Output_Enabled"_s, true);
    m_output = std::make_unique<DFDataOutput>(u"DF data"_s);
    NewBearing();
    NewBearing();
    EXPECT_EQ(InFile(), LINE + LINE);
    EXPECT_EQ(m_output->GetCounters(), (DFDataOutput::Counters{.fileSentences = 2, .serialDropped = 2}));
    EXPECT_EQ(m_trace.lines.filter(ORIGIN).size(), 1);
    EXPECT_EQ(m_output->GetLastError(),
              u"Writing to /dev/no-such-line:9600,e,8,1 failed: the serial line is not ready"_s);
}

TEST_F(DFDataOutputTest, SerialLineThatIsTooSlowDropsSentencesUntilItHasRoomAgain) {
    FillTree();
    const DFDataOutput& output = MakeOutput(false, true);
    EXPECT_TRUE(SpinUntil([&] {
        NewBearing();
        return output.GetCounters().serialDropped > 0;
    }));
    NewBearing();
    EXPECT_EQ(m_trace.lines.filter(u"failed"_s).size(), 1);
    const quint64 sent = output.GetCounters().serialSentences;
    EXPECT_TRUE(SpinUntil([&] {
        (void)m_line.Read();
        NewBearing();
        return output.GetCounters().serialSentences > sent;
    }));
    EXPECT_TRUE(m_trace.lines.last().endsWith(u"works again"_s));
}

TEST_F(DFDataOutputTest, SerialLineThatIsOpenedAgainDoesNotRecoverFromTheFailureBeforeIt) {
    FillTree();
    DFDataOutput& output = MakeOutput(false, true);
    EXPECT_TRUE(SpinUntil([&] {
        NewBearing();
        return output.GetCounters().serialDropped > 0;
    }));
    output.SetEnabled(false);
    (void)m_line.Read();
    m_trace.lines.clear();
    output.SetEnabled(true);
    EXPECT_TRUE(SpinUntil([this] { return !m_trace.lines.filter(u"OnOpen"_s).isEmpty(); }));
    const quint64 sent = output.GetCounters().serialSentences;
    EXPECT_TRUE(SpinUntil([&] {
        (void)m_line.Read();
        NewBearing();
        return output.GetCounters().serialSentences > sent;
    }));
    EXPECT_EQ(m_trace.lines.filter(u"works again"_s), QStringList());
}

TEST_F(DFDataOutputTest, SerialSentencesThatNeverLeaveTheBufferAreDropped) {
    FillTree();
    const LineStop line(m_line);
    for (const bool isUnplugged : {false, true}) {
        DFDataOutput& output = MakeOutput(false, true);
        NewBearing();
        EXPECT_TRUE(SpinUntil([&output] { return output.GetCounters().serialSentences == 1; }));
        line.Stop();
        quint64 unsent = 0;
        while (output.GetCounters().serialDropped == 0) { // as long as there is room in the buffer
            ASSERT_LT(unsent, 1000U);
            NewBearing();
            ++unsent;
        }
        EXPECT_GT(unsent, 10U);
        EXPECT_EQ(output.GetCounters(), (DFDataOutput::Counters{.serialSentences = 1, .serialDropped = 1}));
        if (isUnplugged) {
            m_line.Unplug();
            EXPECT_TRUE(SpinUntil([this] { return !m_trace.lines.filter(u"OnError"_s).isEmpty(); }));
        } else {
            output.SetEnabled(false);
            line.GoOn();
        }
        EXPECT_EQ(output.GetCounters(),
                  (DFDataOutput::Counters{.serialSentences = 1, .serialDropped = unsent}));
        m_output.reset();
    }
}

TEST_F(DFDataOutputTest, SerialLineIsClosedWhenTheOutputIsSwitchedOff) {
    FillTree();
    DFDataOutput& output = MakeOutput(false, true);
    EXPECT_FALSE(m_line.IsClosed());
    output.SetEnabled(false);
    EXPECT_TRUE(SpinUntil([this] { return m_line.IsClosed(); }));
}

// --- Settings ---------------------------------------------------------------------------------------------

TEST_F(DFDataOutputTest, AbsentSettingsAreWrittenWithTheirDefaults) {
    ASSERT_TRUE(CfgCenter::SetConfigDirectory(m_directory.filePath(u"other"_s)));
    m_output = std::make_unique<DFDataOutput>(u"DF data"_s);
    EXPECT_FALSE(m_output->IsEnabled());
    EXPECT_EQ(Store().GetBool(u"RS232Output_Enabled"_s, true), false);
    EXPECT_EQ(Store().GetInt(u"Output_Interval"_s, 1), 0);
    EXPECT_EQ(Store().GetString(u"RS232Output_Address"_s, {}), u"COM1:9600,e,8,1"_s);
    EXPECT_EQ(Store().GetBool(u"FileOutput_Enabled"_s, true), false);
    EXPECT_EQ(Store().GetString(u"FileOutput_Address"_s, {}), u"C:/temp/DFDataOutput.txt"_s);
    const QByteArray settings = Contents(m_directory.filePath(u"other/Application.ini"_s));
    EXPECT_TRUE(settings.contains("COM1:9600,e,8,1")); // committed
}

TEST_F(DFDataOutputTest, SettingsAreSavedByTheDestructorOnly) {
    MakeOutput(false, false);
    FileNameEdit().setText(u"b.txt"_s);
    AddressEdit().setText(u"COM9:1200,n,7,2"_s);
    IntervalSpin().setValue(500);
    FileCheck().setChecked(true);
    FileNameEdit().setText(m_directory.filePath(u"other.txt"_s));
    m_output->SlotUpdateConfiguration();
    EXPECT_EQ(Store().GetString(u"FileOutput_Address"_s, {}), m_fileName);
    EXPECT_EQ(Store().GetInt(u"Output_Interval"_s, -1), 0);
    m_output.reset();
    EXPECT_EQ(Store().GetBool(u"RS232Output_Enabled"_s, true), false);
    EXPECT_EQ(Store().GetInt(u"Output_Interval"_s, -1), 500);
    EXPECT_EQ(Store().GetString(u"RS232Output_Address"_s, {}), u"COM9:1200,n,7,2"_s);
    EXPECT_EQ(Store().GetBool(u"FileOutput_Enabled"_s, false), true);
    EXPECT_EQ(Store().GetString(u"FileOutput_Address"_s, {}), m_directory.filePath(u"other.txt"_s));
    // On disk too, without the event loop and before the store is closed.
    EXPECT_TRUE(Contents(m_directory.filePath(u"config/Application.ini"_s)).contains("COM9:1200,n,7,2"));
}

TEST_F(DFDataOutputTest, SettingsThatOthersChangedStayWhenTheyAreWrittenBackUnlessThePanelChangedThem) {
    MakeOutput(false, false);
    Store().CommitKey({});
    const QString path = m_directory.filePath(u"config/Application.ini"_s);
    QSettings other(path, QSettings::IniFormat);
    other.setValue(u"RS232Output_Address"_s, u"/dev/ttyUSB1:9600,n,8,1"_s);
    other.setValue(u"FileOutput_Address"_s, u"/theirs.txt"_s);
    other.setValue(u"Output_Interval"_s, 100);
    other.sync();
    FileNameEdit().setText(u"/mine.txt"_s);
    m_output->SlotUpdateConfiguration();
    {
        const CfgWriteBack writeBack = Store().BeginWriteBack();
        m_output.reset();
    }
    EXPECT_EQ(Store().GetString(u"RS232Output_Address"_s, {}), u"/dev/ttyUSB1:9600,n,8,1"_s);
    EXPECT_EQ(Store().GetInt(u"Output_Interval"_s, 0), 100);
    EXPECT_EQ(Store().GetString(u"FileOutput_Address"_s, {}), u"/mine.txt"_s);
}

TEST_F(DFDataOutputTest, IntervalThatIsNoTimeStartsNoTimerAndOneThatIsTooLongIsTheLongest) {
    struct Case {
        qint64 stored;
        int used;
    };
    for (const auto& [stored, used] :
         {Case{-1, 0}, Case{0, 0}, Case{25, 25}, Case{4294967297, std::numeric_limits<int>::max()}}) {
        Store().SetInt(u"Output_Interval"_s, stored);
        m_output = std::make_unique<DFDataOutput>(u"DF data"_s);
        m_output.reset();
        EXPECT_EQ(Store().GetInt(u"Output_Interval"_s, -1), used);
    }
}

// --- The configuration widget -----------------------------------------------------------------------------

TEST_F(DFDataOutputTest, PanelHasItsPartsInRows) {
    MakeOutput(false, false);
    EXPECT_EQ(SerialCheck().text(), u"RS232"_s);
    EXPECT_EQ(At<QLabel>(0, 1)->text(), u"Address:"_s);
    EXPECT_NE(At<QLineEdit>(0, 2), nullptr);
    EXPECT_EQ(FileCheck().text(), u"File"_s);
    EXPECT_EQ(At<QLabel>(1, 1)->text(), u"Filename:"_s);
    EXPECT_NE(At<QLineEdit>(1, 2), nullptr);
    EXPECT_EQ(At<QLabel>(2, 1)->text(), u"Output interval (ms):"_s);
    EXPECT_EQ(IntervalSpin().minimum(), 0);
    EXPECT_EQ(IntervalSpin().maximum(), 10000);
    EXPECT_EQ(IntervalSpin().singleStep(), 10);
    EXPECT_EQ(m_output->GetConfigWidget()->parent(), nullptr);
}

TEST_F(DFDataOutputTest, PanelShowsTheSettings) {
    MakeOutput(true, false, 2500);
    EXPECT_FALSE(SerialCheck().isChecked());
    EXPECT_EQ(AddressEdit().text(), m_line.path + u":9600,e,8,1"_s);
    EXPECT_TRUE(FileCheck().isChecked());
    EXPECT_EQ(FileNameEdit().text(), m_fileName);
    EXPECT_EQ(IntervalSpin().value(), 2500);
}

TEST_F(DFDataOutputTest, PartsOfThePanelAreEnabledByTheirBoxes) {
    MakeOutput(false, false);
    const auto expect = [this](bool isSerial, bool isFile) {
        EXPECT_EQ(AddressEdit().isEnabled(), isSerial);
        EXPECT_EQ(FileNameEdit().isEnabled(), isFile);
        EXPECT_EQ(IntervalSpin().isEnabled(), isSerial || isFile);
    };
    expect(false, false);
    SerialCheck().setChecked(true);
    expect(true, false);
    FileCheck().setChecked(true);
    expect(true, true);
    SerialCheck().setChecked(false);
    expect(false, true);
    FileCheck().setChecked(false);
    expect(false, false);
}

TEST_F(DFDataOutputTest, AppliedPanelIsTakenOverAndTheOutputStartsAgain) {
    FillTree();
    DFDataOutput& output = MakeOutput(false, false);
    FileCheck().click();
    EXPECT_FALSE(output.IsEnabled()); // not before it is applied
    QMetaObject::invokeMethod(&output, "SlotUpdateConfiguration", Qt::DirectConnection);
    EXPECT_TRUE(output.IsEnabled());
    NewBearing();
    EXPECT_EQ(InFile(), LINE);

    const QString other = m_directory.filePath(u"other.txt"_s);
    FileNameEdit().setText(other);
    output.SlotUpdateConfiguration();
    NewBearing();
    EXPECT_EQ(InFile(), LINE);
    EXPECT_EQ(Contents(other), LINE);

    SerialCheck().click();
    output.SlotUpdateConfiguration();
    NewBearing();
    EXPECT_EQ(OnLine(LINE.size()), LINE);

    FillOperationMode(7);
    IntervalSpin().setValue(10);
    output.SlotUpdateConfiguration();
    EXPECT_TRUE(SpinUntil([&] { return Contents(other).startsWith(LINE + LINE); }));

    SerialCheck().click();
    FileCheck().click();
    output.SlotUpdateConfiguration();
    EXPECT_FALSE(output.IsEnabled());
}

TEST_F(DFDataOutputTest, EachDifferenceInThePanelStartsTheOutputAgain) {
    const std::vector<std::function<void()>> changes{
        [this] { SerialCheck().click(); }, [this] { AddressEdit().setText(u"COM200"_s); },
        [this] { FileNameEdit().setText(m_fileName + u'x'); }, [this] { IntervalSpin().setValue(9990); }};
    for (const auto& change : changes) {
        FillTree();
        DFDataOutput& output = MakeOutput(true, false);
        NewBearing();
        change();
        output.SlotUpdateConfiguration();
        EXPECT_TRUE(output.IsEnabled());
        EXPECT_TRUE(Contents(m_fileName + u".bak"_s) == LINE || Contents(m_fileName + u'x').isEmpty());
        m_output.reset();
        Store().SetString(u"FileOutput_Address"_s, m_fileName);
        QFile::remove(m_fileName);
        QFile::remove(m_fileName + u".bak"_s);
        QFile::remove(m_fileName + u'x');
    }
}

TEST_F(DFDataOutputTest, PanelWithoutADifferenceDoesNotStartTheOutputAgain) {
    FillTree();
    DFDataOutput& output = MakeOutput(true, false, 0);
    NewBearing();
    output.SlotUpdateConfiguration();
    FileNameEdit().setText(u"x"_s);
    FileNameEdit().setText(m_fileName);
    output.SlotUpdateConfiguration();
    EXPECT_EQ(InFile(), LINE);
    EXPECT_FALSE(QFileInfo::exists(m_fileName + u".bak"_s));
    // Switched off by the program, it stays off.
    output.SetEnabled(false);
    output.SlotUpdateConfiguration();
    EXPECT_FALSE(output.IsEnabled());
}

TEST_F(DFDataOutputTest, PanelThatIsClosedLeavesTheOutputRunning) {
    FillTree();
    DFDataOutput& output = MakeOutput(true, false);
    auto dialog = std::make_unique<QWidget>();
    output.GetConfigWidget()->setParent(dialog.get());
    dialog.reset();
    EXPECT_EQ(output.GetConfigWidget(), nullptr);
    output.SlotUpdateConfiguration();
    QMetaObject::invokeMethod(&output, "SlotStateChanged", Qt::DirectConnection);
    NewBearing();
    EXPECT_EQ(InFile(), LINE);
    m_output.reset();
    EXPECT_EQ(Store().GetString(u"FileOutput_Address"_s, {}), m_fileName);
}

TEST_F(DFDataOutputTest, PanelWithAPartMissingChangesNothing) {
    FillTree();
    DFDataOutput& output = MakeOutput(true, false);
    FileCheck().setChecked(false);
    delete &IntervalSpin();
    output.SlotUpdateConfiguration();
    QMetaObject::invokeMethod(&output, "SlotStateChanged", Qt::DirectConnection);
    EXPECT_TRUE(output.IsEnabled());
    NewBearing();
    EXPECT_EQ(InFile(), LINE);
}

TEST_F(DFDataOutputTest, DestructorDeletesThePanel) {
    const QPointer<QWidget> panel = MakeOutput(false, false).GetConfigWidget();
    EXPECT_FALSE(panel.isNull());
    m_output.reset();
    EXPECT_TRUE(panel.isNull());
}

TEST_F(DFDataOutputTest, MetaObjectHasTheTwoSlots) {
    const QMetaObject& meta = DFDataOutput::staticMetaObject;
    ASSERT_EQ(meta.methodCount() - meta.methodOffset(), 2);
    EXPECT_EQ(meta.method(meta.methodOffset()).methodSignature(), "SlotUpdateConfiguration()");
    EXPECT_EQ(meta.method(meta.methodOffset() + 1).methodSignature(), "SlotStateChanged()");
    EXPECT_STREQ(meta.superClass()->className(), "ZANAbstractInterface");
}

} // namespace

// --- What is set while it works ----------------------------------------------------------------------------

TEST_F(DFDataOutputTest, FileThatIsSetIsWrittenFromNowOnAndStored) {
    FillTree();
    DFDataOutput& output = MakeOutput(false, false);
    output.SetFileOutput(true, m_fileName);
    EXPECT_TRUE(output.IsEnabled());
    NewBearing();
    const QString other = m_directory.filePath(u"other.txt"_s);
    output.SetFileOutput(true, other);
    NewBearing();
    EXPECT_EQ(InFile(), LINE);
    EXPECT_EQ(Contents(other), LINE);
    EXPECT_TRUE(Store().GetBool(u"FileOutput_Enabled"_s, false));
    EXPECT_EQ(Store().GetString(u"FileOutput_Address"_s, {}), other);
    output.SetFileOutput(false, other);
    EXPECT_FALSE(output.IsEnabled());
    NewBearing();
    EXPECT_EQ(Contents(other), LINE);
    EXPECT_FALSE(Store().GetBool(u"FileOutput_Enabled"_s, true));
}

TEST_F(DFDataOutputTest, FileThatIsSetAsItIsIsNotBegunAgain) {
    FillTree();
    DFDataOutput& output = MakeOutput(true, false);
    NewBearing();
    output.SetFileOutput(true, m_fileName);
    EXPECT_EQ(InFile(), LINE);
}

TEST_F(DFDataOutputTest, WhatIsSetOfOneSinkOrTheIntervalLeavesTheFileAsItIs) {
    FillTree();
    FillOperationMode(7);
    DFDataOutput& output = MakeOutput(true, false);
    NewBearing();
    output.SetSerialOutput(true, m_line.path);
    output.SetInterval(5000);
    output.SetInterval(0);
    output.SetSerialOutput(false, m_line.path);
    NewBearing();
    EXPECT_EQ(InFile(), LINE + LINE);
}

TEST_F(DFDataOutputTest, SerialLineThatIsSetIsWrittenFromNowOnAndStored) {
    FillTree();
    DFDataOutput& output = MakeOutput(false, false);
    const PseudoTerminal other;
    for (const PseudoTerminal* const line : {static_cast<const PseudoTerminal*>(&m_line), &other}) {
        m_trace.lines.clear();
        output.SetSerialOutput(true, line->path);
        EXPECT_TRUE(SpinUntil([this] { return !m_trace.lines.filter(u"OnOpen"_s).isEmpty(); }));
        NewBearing();
        QByteArray received;
        EXPECT_TRUE(SpinUntil([&] { return (received += line->Read()).size() >= HEAD.size() + 2; }));
        EXPECT_EQ(received, HEAD + "\r\n");
    }
    EXPECT_TRUE(m_line.IsClosed());
    EXPECT_EQ(Store().GetString(u"RS232Output_Address"_s, {}), other.path);
    EXPECT_TRUE(Store().GetBool(u"RS232Output_Enabled"_s, false));
    output.SetSerialOutput(false, other.path);
    EXPECT_TRUE(other.IsClosed());
    EXPECT_FALSE(output.IsEnabled());
}

TEST_F(DFDataOutputTest, SerialLineThatIsSetAsItIsLeavesTheLineAndTheSettingsAsTheyAre) {
    DFDataOutput& output = MakeOutput(false, true);
    const DFDataOutput::Settings settings = output.GetSettings();
    Store().SetString(u"RS232Output_Address"_s, u"of another program"_s);
    output.SetSerialOutput(settings.serialEnabled, settings.address);
    EXPECT_EQ(Store().GetString(u"RS232Output_Address"_s, {}), u"of another program"_s);
    EXPECT_FALSE(m_line.IsClosed());
}

TEST_F(DFDataOutputTest, IntervalThatIsSetDrivesTheOutputFromNowOnAndIsStored) {
    FillTree();
    FillOperationMode(7);
    DFDataOutput& output = MakeOutput(true, false);
    output.SetInterval(10);
    WaitForTimer(output);
    EXPECT_EQ(Store().GetInt(u"Output_Interval"_s, 0), 10);
    output.SetInterval(0);
    EXPECT_EQ(CountTimers(output), 0);
    const QByteArray before = InFile();
    EXPECT_TRUE(before.startsWith(LINE)) << "the timer wrote";
    NewBearing();
    EXPECT_EQ(InFile(), before + LINE);
}

TEST_F(DFDataOutputTest, IntervalThatIsSetAsItIsDoesNotBeginAgain) {
    FillTree();
    FillOperationMode(7);
    DFDataOutput& output = MakeOutput(true, false);
    output.SetInterval(60'000);
    const auto timer = [&] {
        return QAbstractEventDispatcher::instance()->registeredTimers(&output).value(0, {0, 0, {}}).timerId;
    };
    const int before = timer();
    output.SetInterval(60'000);
    EXPECT_EQ(timer(), before) << "the same one runs on";
    EXPECT_EQ(output.GetSettings().interval, 60'000);
}

TEST_F(DFDataOutputTest, IntervalOfAnOutputThatIsOffStartsNoTimer) {
    DFDataOutput& output = MakeOutput(false, false);
    output.SetInterval(10);
    EXPECT_EQ(CountTimers(output), 0);
    output.SetFileOutput(true, m_fileName);
    EXPECT_EQ(CountTimers(output), 1);
}

TEST_F(DFDataOutputTest, FileOfThisRunEndsWhenAFileIsSet) {
    FillTree();
    const QString ofThisRun = m_directory.filePath(u"run.txt"_s);
    m_output = std::make_unique<DFDataOutput>(u"DF data"_s, ofThisRun);
    EXPECT_EQ(m_output->GetFileOfThisRun(), ofThisRun);
    m_output->SetInterval(5000);
    m_output->SetInterval(0);
    EXPECT_EQ(m_output->GetFileOfThisRun(), ofThisRun) << "the interval does not end it";
    m_output->SetFileOutput(false, m_fileName);
    EXPECT_EQ(m_output->GetFileOfThisRun(), QString());
    EXPECT_FALSE(m_output->IsEnabled());
}

TEST_F(DFDataOutputTest, WhatIsSetIsShownInThePanel) {
    DFDataOutput& output = MakeOutput(false, false);
    output.SetFileOutput(true, m_fileName + u'x');
    output.SetSerialOutput(true, m_line.path);
    output.SetInterval(5000);
    EXPECT_TRUE(FileCheck().isChecked());
    EXPECT_EQ(FileNameEdit().text(), m_fileName + u'x');
    EXPECT_TRUE(SerialCheck().isChecked());
    EXPECT_EQ(AddressEdit().text(), m_line.path);
    EXPECT_EQ(IntervalSpin().value(), 5000);
    EXPECT_EQ(output.GetSettings(),
              (DFDataOutput::Settings{true, m_line.path, true, m_fileName + u'x', 5000}));
}

TEST_F(DFDataOutputTest, StatusOfTheFileIsOffOpenOrFailedWithTheTimeOfTheFailure) {
    using State = DFDataOutput::SinkState;
    FillTree();
    DFDataOutput& output = MakeOutput(false, false);
    EXPECT_EQ(output.GetFileStatus().state, State::Off);
    EXPECT_EQ(output.GetFileStatus().failureTime, 0U);
    output.SetFileOutput(true, m_fileName);
    EXPECT_EQ(output.GetFileStatus().state, State::Open);
    const auto before = static_cast<quint64>(QDateTime::currentMSecsSinceEpoch());
    {
        const FullDisk disk(0);
        NewBearing();
    }
    EXPECT_EQ(output.GetFileStatus().state, State::Failed);
    EXPECT_GE(output.GetFileStatus().failureTime, before);
    EXPECT_TRUE(output.GetFileStatus().lastFailure.startsWith(u"Writing to "_s + m_fileName));
    NewBearing();
    EXPECT_EQ(output.GetFileStatus().state, State::Open) << "it works again";
    EXPECT_FALSE(output.GetFileStatus().lastFailure.isEmpty()) << "and the failure was the last one";
    EXPECT_EQ(output.GetSerialStatus().lastFailure, QString());
    output.SetFileOutput(true, m_directory.filePath(u"missing/output.txt"_s));
    EXPECT_EQ(output.GetFileStatus().state, State::Failed);
    output.SetFileOutput(false, m_fileName);
    EXPECT_EQ(output.GetFileStatus().state, State::Off);
}

TEST_F(DFDataOutputTest, StatusOfTheSerialLineIsOffOpenOrFailed) {
    using State = DFDataOutput::SinkState;
    FillTree();
    DFDataOutput& output = MakeOutput(false, true);
    EXPECT_EQ(output.GetSerialStatus().state, State::Open);
    output.SetSerialOutput(true, u"/dev/no-such-line:9600,e,8,1"_s);
    EXPECT_EQ(output.GetSerialStatus().state, State::Failed) << "before the first sentence, too";
    NewBearing();
    EXPECT_EQ(output.GetSerialStatus().lastFailure,
              u"Writing to /dev/no-such-line:9600,e,8,1 failed: the serial line is not ready"_s);
    EXPECT_NE(output.GetSerialStatus().failureTime, 0U);
    EXPECT_EQ(output.GetFileStatus().lastFailure, QString());
    output.SetSerialOutput(false, m_line.path);
    EXPECT_EQ(output.GetSerialStatus().state, State::Off);
}

TEST_F(DFDataOutputTest, ContentOfTheSinksIsWhatTheirSentencesHold) {
    using Content = DFDataOutput::Content;
    FillTree();
    DFDataOutput& output = MakeOutput(false, false);
    EXPECT_EQ(output.GetFileStatus().content, Content::Nothing);
    EXPECT_EQ(output.GetSerialStatus().content, Content::Nothing);
    output.SetSerialOutput(true, m_line.path);
    EXPECT_EQ(output.GetSerialStatus().content, Content::Short);
    output.SetFileOutput(true, m_fileName);
    EXPECT_EQ(output.GetFileStatus().content, Content::Full);
    EXPECT_EQ(output.GetSerialStatus().content, Content::Full);
    FillSuperResolution(2);
    output.SetEnabled(false);
    output.SetEnabled(true); // finds the emitters
    EXPECT_EQ(output.GetFileStatus().content, Content::Emitters);
    EXPECT_EQ(output.GetSerialStatus().content, Content::Nothing);
}
