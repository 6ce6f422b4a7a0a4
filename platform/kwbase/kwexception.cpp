#include "kwbase/kwexception.h"

#include <utility>

KWException::KWException(QString message, QString sourceFile, QString detail, QString functionName,
                         unsigned sourceLine, unsigned code)
    : m_message(std::move(message))
    , m_sourceFile(std::move(sourceFile))
    , m_detail(std::move(detail))
    , m_functionName(std::move(functionName))
    , m_sourceLine(sourceLine)
    , m_code(code)
    , m_what(m_message.toStdString()) {}

const char* KWException::what() const noexcept {
    return m_what.c_str();
}
