#include "zancommon/commandprotocol.h"

#include "kwbase/datetime.h"
#include "kwbase/tolmos.h"
#include "kwbase/tracesource.h"

#include <QDateTime>
#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QXmlStreamReader>

#include <algorithm>
#include <array>
#include <tuple>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr TraceSource TRACE(u"devicecontrol\\directionfinder\\zancommon\\commandprotocol");

// For XML in the log: blanks per level, and the largest number of characters of an entry.
constexpr int INDENTATION = 4;
constexpr qsizetype MAX_RENDERED_SIZE = qsizetype{1024} * 1024;

/// Date and time of day, with the milliseconds without leading zeros (Qt's format adds them).
QString GetBackupDate() {
    constexpr unsigned MS_PER_SECOND = 1000;
    const unsigned long long now = TolmOS::Create().GetCurrentTime();
    return Tolm::DateTime(now).toString(u"yyyy-MM-dd_hh-mm-ss-"_s) + QString::number(now % MS_PER_SECOND);
}

/// Whether an XML tag has more attributes than `most`, counted by the equals signs outside quotes. Comments,
/// CDATA sections and processing instructions are skipped.
bool HasTagOfMoreAttributes(QByteArrayView text, qsizetype most) {
    static constexpr std::array<std::pair<QByteArrayView, QByteArrayView>, 3> WITHOUT_TAGS{
        {{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}}};
    qsizetype i = 0;
    while ((i = text.indexOf('<', i)) >= 0) {
        const auto* const span =
            std::find_if(WITHOUT_TAGS.begin(), WITHOUT_TAGS.end(),
                         [rest = text.sliced(i)](const auto& each) { return rest.startsWith(each.first); });
        if (span != WITHOUT_TAGS.end()) {
            i = text.indexOf(span->second, i + span->first.size());
            if (i < 0) {
                return false; // it is not closed, so the text is not XML
            }
            continue;
        }
        char quote = 0;
        qsizetype attributes = 0;
        for (++i; i < text.size() && (quote != 0 || text[i] != '>'); ++i) {
            const char c = text[i];
            if (quote != 0) {
                if (c == quote) {
                    quote = 0;
                }
            } else if (c == '"' || c == '\'') {
                quote = c;
            } else if (c == '=' && ++attributes > most) {
                return true;
            }
        }
    }
    return false;
}

/// Whether the markup consists of ASCII bytes in this encoding. Empty: none is declared, which means UTF-8.
bool IsLikeAscii(QStringView encoding) {
    static constexpr std::array<QStringView, 4> PREFIXES{u"UTF-8", u"US-ASCII", u"ISO-8859-", u"windows-"};
    return encoding.isEmpty() ||
           std::any_of(PREFIXES.begin(), PREFIXES.end(), [encoding](QStringView prefix) {
               return encoding.startsWith(prefix, Qt::CaseInsensitive);
           });
}

/// Whether XML may be read into a document and rendered: it is well-formed, and its depth (the document is
/// built, written and destroyed recursively), its size when indented and its attributes per tag (the time of
/// reading grows with their square) are within the bounds of a log.
bool IsRenderable(const QByteArray& text) {
    constexpr qsizetype MAX_BYTES = qsizetype{256} * 1024;
    // Declarations of a document type (entities, default attributes, nested) make a text grow.
    constexpr qsizetype MAX_BYTES_WITH_DECLARATIONS = 1024;
    constexpr qsizetype MAX_ATTRIBUTES = 256;
    constexpr qsizetype MAX_DEPTH = 100;
    if (text.size() > (text.contains("<!DOCTYPE") ? MAX_BYTES_WITH_DECLARATIONS : MAX_BYTES)) {
        return false;
    }
    // A NUL byte: characters of two bytes, or of four.
    if (text.contains('\0') || HasTagOfMoreAttributes(text, MAX_ATTRIBUTES)) {
        return false;
    }
    QXmlStreamReader reader(text);
    reader.setNamespaceProcessing(false);
    qsizetype depth = 0;
    qsizetype renderedSize = text.size();
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        if (token == QXmlStreamReader::StartDocument && !IsLikeAscii(reader.documentEncoding())) {
            return false;
        }
        if (token == QXmlStreamReader::EndElement) {
            --depth;
        }
        renderedSize += depth * INDENTATION;
        if (token == QXmlStreamReader::StartElement) {
            ++depth;
        }
        if (depth > MAX_DEPTH || renderedSize > MAX_RENDERED_SIZE) {
            return false;
        }
    }
    return !reader.hasError();
}

/// The bytes of an entry: XML is indented by four blanks per level; other text, XML that cannot be read and
/// XML beyond the bounds are not changed.
QByteArray ToEightBitText(const QString& entry) {
    QByteArray text = entry.toLatin1();
    if (text.contains('?') && text.contains("?xml version=") && IsRenderable(text)) {
        QDomDocument document;
        if (document.setContent(text)) {
            const QString readable = document.toString(INDENTATION);
            if (!readable.isEmpty() && readable.size() <= MAX_RENDERED_SIZE) {
                text = readable.toLatin1();
            }
        }
    }
    return text;
}

} // namespace

IMessageStore::~IMessageStore() = default;

// NOLINTNEXTLINE(modernize-pass-by-value): the signature is part of the interface
CommandProtocol::CommandProtocol(const QString& deviceAddress, QString deviceLabel)
    : m_strDeviceAddress(deviceAddress)
    , m_strDeviceLabel(std::move(deviceLabel)) {}

CommandProtocol::~CommandProtocol() {
    Close();
}

bool CommandProtocol::Init() {
    return Open() && PerformBackup() && WriteHeader();
}

bool CommandProtocol::Add(const QString& text) {
    if (!m_pCurrentFile) {
        m_strLastError = u"CommandProtocol::Add: m_pCurrentFile == NULL"_s;
        return false;
    }
    // The size on disk, because another program may have truncated the file.
    if (m_pCurrentFile->size() > m_nMaxBytes) {
        const bool isContinued =
            PerformBackup() &&
            Write(u" >>>>>>>>>> PROTOCOL FILE REACHED MAXIMUM SIZE - THIS IS A CONTINUATION FILE\n\n"_s) &&
            WriteHeader();
        if (!isContinued) {
            return false;
        }
    }
    return Write(text);
}

void CommandProtocol::SetMaxBytes(unsigned long bytes) {
    m_nMaxBytes = static_cast<quint32>(bytes);
}

void CommandProtocol::SetDeviceAddress(const QString& address) {
    m_strDeviceAddress = address;
}

bool CommandProtocol::Open() {
    if (!QDir::current().exists(LOG_DIRECTORY)) {
        QDir::current().mkdir(LOG_DIRECTORY);
    }
    QString address = m_strDeviceAddress;
    if (m_isFlat) {
        address.replace(u'/', u'_');
    }
    m_strFileName = ToValidFileName(LOG_DIRECTORY + u"/commandlog-"_s + address + u".txt"_s);
    m_pCurrentFile = std::make_shared<QFile>(m_strFileName);
    // Unbuffered: a line is one system call, and has reached the file when it returns.
    if (!m_pCurrentFile->open(QIODevice::Append | QIODevice::Text | QIODevice::Unbuffered)) {
        m_strLastError = u"CommandProtocol: Could not open file "_s + m_strFileName + u'.';
        return false;
    }
    m_strLastError.clear();
    return true;
}

void CommandProtocol::Close() {
    if (m_pCurrentFile && m_pCurrentFile->isOpen()) {
        m_pCurrentFile->close();
        m_pCurrentFile.reset();
    }
}

bool CommandProtocol::PerformBackup() {
    Close();
    return BackupFile() && Open();
}

bool CommandProtocol::BackupFile() {
    EnsureConstantNumberOfBackups();
    const QString backupName = ToValidFileName(m_strFileName + u'-' + GetBackupDate() + u".bak"_s);
    QFile::remove(backupName);
    if (!QFile::exists(m_strFileName)) {
        m_strLastError = u"CommandProtocol::BackupFile: file <"_s + m_strFileName + u"> does not exist."_s;
        return false;
    }
    if (!QDir::current().rename(m_strFileName, backupName)) {
        m_strLastError = u"CommandProtocol::BackupFile: renaming <"_s + m_strFileName + u"> to <"_s +
                         backupName + u"> failed."_s;
        return false;
    }
    return true;
}

void CommandProtocol::EnsureConstantNumberOfBackups() {
    constexpr qsizetype MOST_BEFORE_A_BACKUP = 19;
    const QFileInfoList backups = QDir(LOG_DIRECTORY).entryInfoList({u"*.bak"_s}, QDir::Files, QDir::NoSort);
    if (backups.size() <= MOST_BEFORE_A_BACKUP) {
        return;
    }
    // Backups with the same time of modification are ordered by the date in their names.
    const auto oldest =
        std::min_element(backups.begin(), backups.end(), [](const QFileInfo& a, const QFileInfo& b) {
            return std::make_tuple(a.lastModified(), a.fileName()) <
                   std::make_tuple(b.lastModified(), b.fileName());
        });
    TRACE.Information([] { return u"CommandProtocol: Going to delete the oldest backup file."_s; }, 263);
    QFile::remove(LOG_DIRECTORY + u'/' + oldest->fileName());
}

bool CommandProtocol::Write(const QString& text) {
    if (m_pCurrentFile && m_pCurrentFile->isOpen()) {
        const QByteArray entry = ToEightBitText(text);
        const QByteArrayView time = GetTimeOfDay();
        QByteArray line;
        line.reserve(time.size() + entry.size() + 1);
        line.append(time).append(entry).append('\n');
        const qint64 written = m_pCurrentFile->write(line);
        if (written == line.size()) {
            return true;
        }
        if (written > 0) { // no partial line when the disk is full
            m_pCurrentFile->resize(m_pCurrentFile->size() - written);
        }
    }
    m_strLastError = u"CommandProtocol: Writing commandfile "_s + m_strFileName + u" failed."_s;
    return false;
}

QByteArrayView CommandProtocol::GetTimeOfDay() {
    constexpr qint64 MS_PER_SECOND = 1000;
    const auto now = static_cast<qint64>(TolmOS::Create().GetCurrentTime());
    if (const qint64 second = now / MS_PER_SECOND; second != m_second || m_timeOfDay.isEmpty()) {
        // Conversion to local time takes longer than writing a line, so it is done once per second.
        m_second = second;
        m_timeOfDay = QDateTime::fromSecsSinceEpoch(second).toString(u"hh:mm:ss:zzz:\t"_s).toLatin1();
    }
    constexpr qsizetype LAST_DIGIT = 11; // of the milliseconds
    qint64 milliseconds = now % MS_PER_SECOND;
    for (qsizetype digit = LAST_DIGIT; digit > LAST_DIGIT - 3; --digit) {
        m_timeOfDay[digit] = static_cast<char>('0' + milliseconds % 10);
        milliseconds /= 10;
    }
    return m_timeOfDay;
}

bool CommandProtocol::WriteHeader() {
    return Write(u"DF-Address: "_s + m_strDeviceAddress + u'\t' + m_strDeviceLabel + u'\n');
}

QString CommandProtocol::ToValidFileName(const QString& name) {
    QString valid = name;
    for (const QChar forbidden : {u':', u'*', u'"'}) {
        valid.replace(forbidden, u'_');
    }
    return valid;
}
