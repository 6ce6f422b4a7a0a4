#pragma once

#include "zanplatform_export.h"

#include <QString>

#include <exception>
#include <string>

/// The platform's exception, thrown where a value or node could not be created from its descriptor.
class ZANPLATFORM_EXPORT KWException : public std::exception {
public:
    /// The code of an exception that has no specific code.
    static constexpr unsigned NO_CODE = 0xFFFFFFFFU;

    /// \param sourceFile path below the source root without extension
    /// \param detail     additional text; empty in every use so far
    /// \param code       `NO_CODE` in every use so far
    KWException(QString message, QString sourceFile, QString detail, QString functionName,
                unsigned sourceLine, unsigned code);

    [[nodiscard]] const QString& GetMessage() const { return m_message; }
    [[nodiscard]] const QString& GetSourceFile() const { return m_sourceFile; }
    [[nodiscard]] const QString& GetDetail() const { return m_detail; }
    [[nodiscard]] const QString& GetFunctionName() const { return m_functionName; }
    [[nodiscard]] unsigned GetSourceLine() const { return m_sourceLine; }
    [[nodiscard]] unsigned GetCode() const { return m_code; }
    /// The message in UTF-8; valid as long as the exception.
    [[nodiscard]] const char* what() const noexcept override;

private:
    QString m_message;
    QString m_sourceFile;
    QString m_detail;
    QString m_functionName;
    unsigned m_sourceLine;
    unsigned m_code;
    std::string m_what;
};
