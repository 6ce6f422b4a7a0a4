#include "support/printing.h"
#include "support/recordings.h"
#include "support/stationprocess.h"
#include "support/storedsettings.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSettings>

#include <array>
#include <csignal>
#include <memory>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

// Settings that other programs read and write, too: through QSettings, and through Python's configparser.

namespace {

QString Path(const StoredSettings& settings) {
    return settings.GetDirectory() + u"/Application.ini"_s;
}

ICfg& Store() {
    return CfgCenter::GetAppCfg(ICfg::View::Stations);
}

/// Texts of all kinds, the first ones such that a file holds them without quotes.
constexpr qsizetype PLAIN_COUNT = 11;

QStringList Texts() {
    QStringList texts = {u"plain"_s,
                         u""_s,
                         u"a = b"_s,
                         u"10.0.0.7:5555"_s,
                         u"# no comment"_s,
                         u"[no section]"_s,
                         u"%20 %(name)s ${name}"_s,
                         u"C:/temp/DFDataOutput.txt"_s,
                         u"Grüße Δφ"_s,
                         u"方位 \U0001F4E1"_s,
                         u"a@b"_s,
                         u"WB;SR;HF"_s,
                         u"; no comment"_s,
                         u"20,30, 40"_s,
                         u","_s,
                         u"C:\\temp\\new\\x41"_s,
                         u"C:\\"_s,
                         u"\\\\server\\share"_s,
                         u"\""_s,
                         u"\"quoted\""_s,
                         u"in \"the\" middle"_s,
                         u" blanks around "_s,
                         u" "_s,
                         u"\ttab\t"_s,
                         u"two\nlines\r\nand more"_s,
                         u"@"_s,
                         u"@@"_s,
                         u"@Invalid()"_s,
                         u"@ByteArray(x)"_s,
                         u"@String(x)"_s,
                         u"@Size(1 2)"_s,
                         u"\u00A0no-break blank\u2003"_s,
                         QString(QChar::ByteOrderMark) + u"mark"_s,
                         QString(QChar(0x2028)),
                         QString(QChar(0xD800)) + u"a1"_s,
                         u"a"_s + QChar(0xDC00),
                         QString(10000, u'x')};
    for (char16_t c = 0; c <= 0xA0; ++c) {
        texts += u"x"_s + QChar(c) + u"1y"_s;
        texts += QString(QChar(c));
        texts += QChar(c) + u"fee"_s;
    }
    return texts;
}

/// Keys at the top, in sections and below them, one for each text.
QString Key(qsizetype i) {
    const QStringList sections = {u""_s, u"Section/"_s, u"Section/Sub section/"_s, u"Größen/a.b/"_s};
    return sections[i % sections.size()] + u"Key %1"_s.arg(i);
}

/// Runs a Python program on the settings file; it prints what is returned. `text` is the function that
/// configuration.md shows.
QByteArray RunPython(const StoredSettings& settings, const QByteArray& program) {
    const QByteArray head = R"(
import configparser, json, re, sys
settings = configparser.ConfigParser(interpolation=None)
settings.optionxform = str
settings.read(sys.argv[1], encoding='utf-8')

def text(value):
    unescape = lambda m: chr(int(m[1], 16)) if m[1] else {'n': '\n', 'r': '\r', 't': '\t'}.get(m[2], m[2] or '')
    return re.sub(r'\\(?:x([0-9a-f]+)|(.))|^@', unescape, value[1:-1]) if value[:1] == '"' else value

)";
    QProcess python;
    python.start(u"python3"_s, {u"-c"_s, QString::fromUtf8(head + program), Path(settings)});
    EXPECT_TRUE(python.waitForFinished(PATIENCE_MS));
    EXPECT_EQ(python.exitCode(), 0) << python.readAllStandardError().toStdString();
    return python.readAllStandardOutput();
}

} // namespace

TEST(SettingsExchange, QSettingsReadsWhatIsWrittenToTheLetter) {
    const StoredSettings settings;
    const QStringList texts = Texts();
    for (qsizetype i = 0; i < texts.size(); ++i) {
        Store().SetString(Key(i), texts[i]);
    }
    Store().SetInt(u"Number"_s, -5);
    Store().SetBool(u"Flag"_s, true);
    Store().CommitKey({});
    const QSettings other(Path(settings), QSettings::IniFormat);
    EXPECT_EQ(other.allKeys().size(), texts.size() + 2);
    for (qsizetype i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(other.value(Key(i)), QVariant(texts[i])) << Key(i).toStdString();
    }
    EXPECT_EQ(other.value(u"Number"_s).toInt(), -5);
    EXPECT_TRUE(other.value(u"Flag"_s).toBool());
    EXPECT_EQ(other.status(), QSettings::NoError);
}

TEST(SettingsExchange, WhatQSettingsWritesIsReadToTheLetter) {
    const StoredSettings settings;
    QStringList texts = Texts();
    texts.removeIf([](const QString& text) { return !text.isValidUtf16(); }); // it does not write them
    {
        QSettings other(Path(settings), QSettings::IniFormat);
        for (qsizetype i = 0; i < texts.size(); ++i) {
            other.setValue(Key(i), texts[i]);
        }
        other.setValue(u"key=[x]; \"%20\" : é/a\nb"_s, u"odd"_s);
        other.setValue(u"General/Sub"_s, u"general"_s);
        other.setValue(u"Flag"_s, true);
        other.setValue(u"Number"_s, 3600000000LL);
        other.setValue(u"Half"_s, 0.5);
        other.setValue(u"Lists/Two"_s, QStringList{u"COR"_s, u"VEC"_s});
        other.setValue(u"Lists/Odd"_s, QStringList{u"a,b"_s, u" c"_s, u""_s, u"@d"_s, u"e\\\"f"_s});
        other.setValue(u"Lists/None"_s, QStringList());
    }
    settings.Reopen();
    for (qsizetype i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(Store().GetString(Key(i), u"(absent)"_s), texts[i]) << Key(i).toStdString();
    }
    EXPECT_EQ(Store().GetString(u"key=[x]; \"%20\" : é/a\nb"_s, {}), u"odd"_s);
    EXPECT_EQ(Store().GetString(u"General/Sub"_s, {}), u"general"_s);
    EXPECT_TRUE(Store().GetBool(u"Flag"_s, false));
    EXPECT_EQ(Store().GetInt(u"Number"_s, 0), 3600000000LL);
    EXPECT_EQ(Store().GetString(u"Half"_s, {}), u"0.5"_s);
    EXPECT_EQ(Store().GetString(u"Lists/Two"_s, {}), u"COR,VEC"_s);
    EXPECT_EQ(Store().GetString(u"Lists/Odd"_s, {}), u"a,b, c,,@d,e\\\"f"_s);
    EXPECT_EQ(Store().GetString(u"Lists/None"_s, u"(absent)"_s), u""_s);
    EXPECT_EQ(CfgCenter::GetLastError(), QString());

    // And it is all there when the file has been written.
    Store().SetInt(u"Mine"_s, 1);
    Store().CommitKey({});
    const QSettings other(Path(settings), QSettings::IniFormat);
    for (qsizetype i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(other.value(Key(i)), QVariant(texts[i])) << Key(i).toStdString();
    }
    EXPECT_EQ(other.value(u"key=[x]; \"%20\" : é/a\nb"_s), QVariant(u"odd"_s));
    EXPECT_EQ(other.value(u"General/Sub"_s), QVariant(u"general"_s));
}

TEST(SettingsExchange, QSettingsAndTheStoreChangeOneFileInTurns) {
    const StoredSettings settings;
    QSettings other(Path(settings), QSettings::IniFormat);
    for (int i = 0; i < 20; ++i) {
        other.setValue(u"Other/Key%1"_s.arg(i), i);
        other.sync();
        Store().SetInt(u"Mine/Key%1"_s.arg(i), i);
        Store().CommitKey({});
    }
    other.sync();
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(other.value(u"Mine/Key%1"_s.arg(i)).toInt(), i);
        EXPECT_EQ(Store().GetInt(u"Other/Key%1"_s.arg(i), -1), i);
    }
}

TEST(SettingsExchange, PythonReadsSectionsKeysAndUnquotedValuesToTheLetterAndQuotedOnesByTwoLines) {
    const StoredSettings settings;
    const QStringList texts = Texts();
    for (qsizetype i = 0; i < texts.size(); ++i) {
        Store().SetString(Key(i), texts[i]);
    }
    Store().CommitKey({});
    const QByteArray printed = RunPython(settings, R"(
print(json.dumps({name: {key: [value, text(value)] for key, value in settings[name].items()} for name in settings}))
)");
    const QJsonObject sections = QJsonDocument::fromJson(printed).object();
    qsizetype count = 0;
    for (const QJsonValue& section : sections) {
        count += section.toObject().size();
    }
    EXPECT_EQ(count, texts.size());
    for (qsizetype i = 0; i < texts.size(); ++i) {
        const qsizetype slash = Key(i).lastIndexOf(u'/');
        const QString section = slash < 0 ? u"General"_s : Key(i).first(slash);
        const QJsonArray values = sections[section][Key(i).sliced(slash + 1)].toArray();
        EXPECT_EQ(values[1].toString(), texts[i]) << Key(i).toStdString();
        if (i < PLAIN_COUNT) {
            EXPECT_EQ(values[0].toString(), texts[i]) << Key(i).toStdString();
        }
    }
}

TEST(SettingsExchange, WhatPythonWritesIsRead) {
    const StoredSettings settings;
    Store().SetString(u"Kept"_s, u"a;b\\c"_s);
    Store().SetString(u"A/B/Kept"_s, u"two\nlines"_s);
    Store().CommitKey({});
    RunPython(settings, R"(
settings['General']['List'] = 'COR,VEC; "HF"'
settings['General']['Path'] = r'C:\temp\new'
settings['A/B']['Text'] = 'Größe = 5 %'
settings['New section'] = {'Number': '7', 'Flag': 'True', 'Empty': ''}
with open(sys.argv[1], 'w', encoding='utf-8') as file:
    settings.write(file)
)");
    settings.Reopen();
    EXPECT_EQ(Store().GetString(u"Kept"_s, {}), u"a;b\\c"_s);
    EXPECT_EQ(Store().GetString(u"A/B/Kept"_s, {}), u"two\nlines"_s);
    EXPECT_EQ(Store().GetString(u"List"_s, {}), u"COR,VEC; \"HF\""_s);
    EXPECT_EQ(Store().GetString(u"Path"_s, {}), u"C:\\temp\\new"_s);
    EXPECT_EQ(Store().GetString(u"A/B/Text"_s, {}), u"Größe = 5 %"_s);
    EXPECT_EQ(Store().GetInt(u"New section/Number"_s, 0), 7);
    EXPECT_TRUE(Store().GetBool(u"New section/Flag"_s, false));
    EXPECT_EQ(Store().GetString(u"New section/Empty"_s, u"(absent)"_s), u""_s);
}

TEST(SettingsExchange, NothingIsTornOrLostBesideProgramsThatDoNotKnowTheLock) {
    const std::array writers = {
        // As editors and scripts do: a new file that is renamed, and the old one written again. This takes
        // 2 ms, so that the two programs meet in it.
        "with open(name + '.new', 'w') as file: settings.write(file)\n        os.rename(name + '.new', name)",
        "with open(name, 'w') as file:\n            settings.write(file); file.flush(); time.sleep(0.002)"};
    for (const char* const write : writers) {
        SCOPED_TRACE(write);
        const StoredSettings settings;
        constexpr int KEYS = 500;
        for (int i = 0; i < KEYS; ++i) {
            Store().SetInt(u"Section%1/Key%2"_s.arg(i % 10).arg(i), i);
        }
        Store().CommitKey({});
        QProcess python;
        python.start(u"python3"_s, {u"-c"_s, QString::fromUtf8(QByteArray(R"(
import configparser, os, sys, time
name = sys.argv[1]
for i in range(100):
    settings = configparser.ConfigParser(interpolation=None)
    settings.optionxform = str
    settings.read(name, encoding='utf-8')
    if 'Theirs' not in settings: settings['Theirs'] = {}
    settings['Theirs']['Round'] = str(i)
    if True:
        )") + write + '\n'),
                                    Path(settings)});
        ASSERT_TRUE(python.waitForStarted(PATIENCE_MS));
        int round = 0;
        while (!python.waitForFinished(1)) {
            Store().SetInt(u"Mine/Round"_s, ++round);
            Store().CommitKey({});
        }
        EXPECT_EQ(python.exitCode(), 0) << python.readAllStandardError().toStdString();
        Store().SetInt(u"Mine/Round"_s, ++round);
        Store().CommitKey({});
        settings.Reopen();
        for (int i = 0; i < KEYS; ++i) {
            ASSERT_EQ(Store().GetInt(u"Section%1/Key%2"_s.arg(i % 10).arg(i), -1), i);
        }
        EXPECT_EQ(Store().GetInt(u"Mine/Round"_s, -1), round);
        EXPECT_EQ(QDir(settings.GetDirectory()).entryList(QDir::Files), QStringList(u"Application.ini"_s));
    }
}

TEST(SettingsExchange, FilesThatEarlierVersionsWroteAreReadAsTheyWereMeant) {
    StoredSettings settings;
    settings.Write(R"(FileOutput_Address=C:\temp\new.txt
Null="\u0000\u001f"
RS232Output_Address=COM1:9600,e,8,1
Server=\\server\x41
Blank=" x"
Type=@@x

[OverheadPass]
Path=C:\temp\new

[ZANStations/ZANStation0]
DevOptions=WB;SR;"HF"
Methods=COR, VEC
)");
    EXPECT_EQ(Store().GetString(u"FileOutput_Address"_s, {}), u"C:\\temp\\new.txt"_s);
    EXPECT_EQ(Store().GetString(u"Null"_s, {}), QString(QChar(QChar::Null)) + QChar(0x1F));
    EXPECT_EQ(Store().GetString(u"RS232Output_Address"_s, {}), u"COM1:9600,e,8,1"_s);
    EXPECT_EQ(Store().GetString(u"Server"_s, {}), u"\\\\server\\x41"_s);
    EXPECT_EQ(Store().GetString(u"Blank"_s, {}), u" x"_s);
    EXPECT_EQ(Store().GetString(u"Type"_s, {}), u"@@x"_s);
    EXPECT_EQ(Store().GetString(u"OverheadPass/Path"_s, {}), u"C:\\temp\\new"_s);
    EXPECT_EQ(Store().GetString(u"ZANStations/ZANStation0/DevOptions"_s, {}), u"WB;SR;\"HF\""_s);
    EXPECT_EQ(Store().GetString(u"ZANStations/ZANStation0/Methods"_s, {}), u"COR, VEC"_s);

    // One line that QSettings does not write makes it a file of an earlier version.
    for (const char* const line :
         {"Top=1\n[S]\n", "[A/B]\nKey=1\n[S]\n", "[S]\nKey = 1\n", "[S]\nKey=a;b\n", "[S]\nKey=a,b\n",
          "[S]\nKey=C:\\data\n", "[S]\nKey=a=b\n", "[S]\nKey=5\"\n", "[S]\nKey=\"a\"b\n", "[S]\nKey=C:\\\n",
          "[S]\nK y=1\n", "[S]\nKey= 1\n", "[S]\nKey=\"a\n"}) {
        SCOPED_TRACE(line);
        settings.Write(QByteArray(line) + "Path=C:\\temp\\new\n");
        EXPECT_EQ(Store().GetString(u"S/Path"_s, {}), u"C:\\temp\\new"_s);
    }
    settings.Write("; typed by hand\n[S]\nKey=1\nPath=C:\\\\temp\n");
    EXPECT_EQ(Store().GetString(u"S/Path"_s, {}), u"C:\\temp"_s);
}

TEST(SettingsExchange, StationThatEndsRevertsNothingThatWasChangedWhileItRan) {
    const StoredSettings settings;
    const QString directory = settings.GetDirectory();
    ASSERT_TRUE(CfgCenter::Close());
    WriteFile(directory + u"/recording.csv"_s,
              RECORDING_HEADER + "1000,121500000,71.5,10.0,90,-52.04,359.9,1.0,-1.0,52.5,5.5,10.0\n"
                                 "3601000,121500000,71.5,10.0,90,-52.04,359.9,1.0,-1.0,52.5,5.5,10.0\n");
    const QStringList first = {
        u"run"_s,      u"--recording"_s,     directory + u"/recording.csv"_s, u"--config"_s, directory,
        u"--output"_s, directory + u"/out"_s};
    ASSERT_EQ(RunStation(first + QStringList{u"--speed"_s, u"max"_s}).exitCode, 0);

    ASSERT_TRUE(
        QFile::remove(directory + u"/out"_s)); // it comes again when the station has read its settings
    QProcess station;
    station.start(QStringLiteral(ZAN_STATION), first + QStringList{u"--pitch-threshold"_s, u"12.5"_s});
    ASSERT_TRUE(Await(station, [&directory] { return !ReadFile(directory + u"/out"_s).isEmpty(); }));
    settings.Reopen();
    const QString section = u"ZANStations/ZANStation0/"_s;
    Store().SetInt(u"Output_Interval"_s, 250);
    Store().SetString(u"RS232Output_Address"_s, u"/dev/ttyUSB7:9600,n,8,1"_s);
    Store().SetInt(section + u"Declination"_s, -35);
    Store().SetString(section + u"HwRequiredComponents"_s, u"PX106"_s);
    Store().SetInt(section + u"PitchThreshold"_s, 33);
    ASSERT_TRUE(CfgCenter::Close());
    kill(static_cast<pid_t>(station.processId()), SIGINT);
    ASSERT_TRUE(station.waitForFinished(PATIENCE_MS));

    settings.Reopen();
    EXPECT_EQ(Store().GetInt(u"Output_Interval"_s, 0), 250);
    EXPECT_EQ(Store().GetString(u"RS232Output_Address"_s, {}), u"/dev/ttyUSB7:9600,n,8,1"_s);
    EXPECT_EQ(Store().GetInt(section + u"Declination"_s, 0), -35);
    EXPECT_EQ(Store().GetString(section + u"HwRequiredComponents"_s, {}), u"PX106"_s);
    EXPECT_EQ(Store().GetString(section + u"PitchThreshold"_s, {}), u"12.5"_s) << "this the station changed";
}
