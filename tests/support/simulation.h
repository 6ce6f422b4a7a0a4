#pragma once

#include "simulator/simulatordriver.h"
#include "zancommon/nulldrivercallback.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

/// Notes what a driver delivers, on whatever thread that comes.
class SimulationRecorder final : public KvZANCommon::NullDriverCallback {
public:
    struct Fixed {
        KvZANCommon::FFMData data;
        KvZANCommon::StatusStruct status;
        bool averaged;
    };
    struct Block {
        long range;
        quint64 time;
        unsigned firstChannel;
        std::vector<Bearing> bearings;
        KvZANCommon::StatusStruct status;
    };

    std::vector<Fixed> fixed;
    std::vector<Block> blocks;
    std::vector<KvZANCommon::SuperResolutionStruct> resolved;
    std::vector<double> found;
    std::vector<double> audioLevels;
    std::vector<std::vector<short>> spectra;
    std::vector<std::vector<short>> azimuthSpectra;
    std::vector<KvZANCommon::GPSStruct> fixes;
    std::vector<bool> endsOfScan;
    QStringList commands;
    QStringList errors;
    QStringList testResults;
    int closed = 0;

    /// Waits until a condition on what is noted holds. False when it does not within far longer than any test
    /// needs.
    template <class Condition>
    bool WaitUntil(Condition condition) {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(30), condition);
    }
    bool WaitForFixed(std::size_t count) {
        return WaitUntil([=, this] { return fixed.size() >= count; });
    }
    bool WaitForBlocks(std::size_t count) {
        return WaitUntil([=, this] { return blocks.size() >= count; });
    }

    void fillFFMBuffer(const KvZANCommon::FFMData& data, KvZANCommon::StatusStruct& status,
                       bool averaged) override {
        Note(fixed, {data, status, averaged});
    }
    void fillScanBuffer(long range, unsigned long long& time, unsigned firstChannel, unsigned count,
                        Bearing* bearings, KvZANCommon::StatusStruct& status) override {
        Note(blocks, {range, time, firstChannel, std::vector<Bearing>(bearings, bearings + count), status});
    }
    void fillFFMSRBuffer(KvZANCommon::SuperResolutionStruct& data, KvZANCommon::StatusStruct&) override {
        Note(resolved, data);
    }
    void setSearchFrequency(double frequency) override { Note(found, frequency); }
    void fillAudioLevel(double level) override { Note(audioLevels, level); }
    void fillSpectrumBuffer(const short* values, int count) override {
        Note(spectra, std::vector<short>(values, values + count));
    }
    void fillSRSpectrumBuffer(short* values, int count, unsigned long long&) override {
        Note(azimuthSpectra, std::vector<short>(values, values + count));
    }
    void fillGPSData(double latitude, double longitude, unsigned long long time, bool valid, int satellites,
                     int) override {
        Note(fixes, {latitude, longitude, 0.0, time, satellites, valid});
    }
    void SetEndOfScan(bool end) override { Note(endsOfScan, end); }
    void SetCommandLog(QString& line) override { Note(commands, line); }
    void reportError(KvZANCommon::ErrorStruct& error) override { Note(errors, error.text); }
    void ReportBITResult(KvZANCommon::ErrorStruct& result) override { Note(testResults, result.text); }
    void CloseDataLink() override {
        const std::lock_guard lock(m_mutex);
        ++closed;
        m_changed.notify_all();
    }

private:
    /// A device that is as fast as possible would fill the memory.
    static constexpr std::size_t MOST = 20'000;

    template <class List, class Element = typename List::value_type>
    void Note(List& list, Element element) {
        const std::lock_guard lock(m_mutex);
        if (static_cast<std::size_t>(list.size()) < MOST) {
            list.push_back(std::move(element));
        }
        m_changed.notify_all();
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
};

/// A simulated device in a scenario of its own, as fast as possible.
class SimulationTest : public testing::Test {
protected:
    /// A station at 55 N 5 E, with a device that has antennas for HF and VUHF.
    static QByteArray Station(const QByteArray& more = {}) {
        return R"("station": {"latitude": 55, "longitude": 5, "altitude": 20)" + more + "}";
    }
    static QByteArray Device(const QByteArray& more = {}) {
        return R"("device": {"type": "ZANTIDE", "options": ["ZAN-HFR", "ZANTIDE-SR"],
                  "converters": [{"type": "RCV03"}, {"type": "RCV01"}],
                  "antennas": [{"name": "PX115SR", "converter": 0}, {"name": "PX104SR_L", "converter": 1}],
                  "components": [{"name": "DF unit", "serialNumber": "7", "version": "2.1"},
                                 {"name": "GPS receiver"}])" +
               more + "}";
    }
    /// \param emitters the objects of the list
    static QByteArray Scenario(const QByteArray& emitters = {}, const QByteArray& more = {}) {
        return "{" + Station() + "," + Device() + R"(, "emitters": [)" + emitters + "]" + more + "}";
    }

    ~SimulationTest() override { m_driver.SetMode(EMODE_STANDBY); }

    int Open(const QByteArray& scenario) {
        QFile file(m_directory.filePath(QStringLiteral("scenario.json")));
        EXPECT_TRUE(file.open(QFile::WriteOnly));
        file.write(scenario);
        file.close();
        return OpenAt(file.fileName());
    }
    int OpenAt(const QString& address) {
        m_driver.SetCallback(&m_recorder);
        std::string name = address.toStdString();
        const int result = m_driver.Initialize(name, false);
        EXPECT_EQ(m_driver.SetTest(QStringLiteral("speed max")), Simulator::SimulatorDriver::OK);
        return result;
    }
    static KvZANCommon::FreqRangeDefinition Range(double start, double step, double stop, int index = 0) {
        KvZANCommon::FreqRangeDefinition range;
        range.SetIndex(index);
        range.SetStartFreq(start);
        range.SetStepFreq(step);
        range.SetStopFreq(stop);
        return range;
    }

    QTemporaryDir m_directory;
    SimulationRecorder m_recorder;
    Simulator::SimulatorDriver m_driver;
};
