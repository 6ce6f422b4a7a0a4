// Reading settings through the store. The yardstick is QSettings with the same keys in its own INI format.

#include "tolmappstartup/cfgcenter.h"

#include <QCoreApplication>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int FEW = 10;
constexpr int MANY = 10000;

// A settings file with a given number of keys, half of them numbers and half of them texts, at the top and in
// a section. Each reader has its own file with the same content.
class SettingsFiles {
public:
    explicit SettingsFiles(qint64 count) {
        QByteArray keys;
        for (int i = 0; i < count / 4; ++i) {
            const QByteArray number = QByteArray::number(i);
            keys += "Frequency" + number + "=" + QByteArray::number(20000000LL + i) + "\n";
            keys += "Address" + number + "=10.0.0." + number + "\n";
            m_numberKeys += u"Frequency"_s + QString::number(i);
            m_textKeys += u"Address"_s + QString::number(i);
        }
        const QByteArray content = keys + "[SystemConfiguration]\n" + keys;
        for (const QString& name : {u"Application.ini"_s, u"native.ini"_s}) {
            QFile file(m_directory.filePath(name));
            if (!file.open(QFile::WriteOnly) || file.write(content) != content.size()) {
                std::abort();
            }
        }
        if (!CfgCenter::SetConfigDirectory(m_directory.path())) {
            std::abort();
        }
        m_pNative = std::make_unique<QSettings>(m_directory.filePath(u"native.ini"_s), QSettings::IniFormat);
    }
    SettingsFiles(const SettingsFiles&) = delete;
    SettingsFiles& operator=(const SettingsFiles&) = delete;
    ~SettingsFiles() { CfgCenter::Close(); }

    static ICfg& Store() { return CfgCenter::GetAppCfg(ICfg::View::Outputs); }
    QSettings& Native() { return *m_pNative; }
    // The keys one after the other, so that no reader sees the same one twice in a row.
    const QString& NextNumberKey() { return m_numberKeys[++m_number % m_numberKeys.size()]; }
    const QString& NextTextKey() { return m_textKeys[++m_number % m_textKeys.size()]; }

private:
    QTemporaryDir m_directory;
    std::unique_ptr<QSettings> m_pNative;
    QStringList m_numberKeys;
    QStringList m_textKeys;
    qsizetype m_number = 0;
};

void Int_Store(benchmark::State& state) {
    SettingsFiles files(state.range(0));
    const ICfg& store = SettingsFiles::Store();
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(store.GetInt(files.NextNumberKey(), 0));
    }
}

void Int_QSettings(benchmark::State& state) {
    SettingsFiles files(state.range(0));
    const QSettings& settings = files.Native();
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(settings.value(files.NextNumberKey(), 0).toLongLong());
    }
}

void String_Store(benchmark::State& state) {
    SettingsFiles files(state.range(0));
    const ICfg& store = SettingsFiles::Store();
    const QString defaultValue;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(store.GetString(files.NextTextKey(), defaultValue));
    }
}

void String_QSettings(benchmark::State& state) {
    SettingsFiles files(state.range(0));
    const QSettings& settings = files.Native();
    const QString defaultValue;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(settings.value(files.NextTextKey(), defaultValue).toString());
    }
}

void SubInt_Store(benchmark::State& state) {
    SettingsFiles files(state.range(0));
    const CfgPtr pStore(SettingsFiles::Store().GetSubCfg(u"SystemConfiguration"_s));
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(pStore->GetInt(files.NextNumberKey(), 0));
    }
}

void SubInt_QSettings(benchmark::State& state) {
    SettingsFiles files(state.range(0));
    QSettings& settings = files.Native();
    settings.beginGroup(u"SystemConfiguration"_s);
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(settings.value(files.NextNumberKey(), 0).toLongLong());
    }
    settings.endGroup();
}

BENCHMARK(Int_Store)->Arg(FEW)->Arg(MANY);
BENCHMARK(Int_QSettings)->Arg(FEW)->Arg(MANY);
BENCHMARK(String_Store)->Arg(FEW)->Arg(MANY);
BENCHMARK(String_QSettings)->Arg(FEW)->Arg(MANY);
BENCHMARK(SubInt_Store)->Arg(FEW)->Arg(MANY);
BENCHMARK(SubInt_QSettings)->Arg(FEW)->Arg(MANY);

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
