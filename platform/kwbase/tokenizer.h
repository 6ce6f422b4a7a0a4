#pragma once

#include "zanplatform_export.h"

#include <QString>

namespace Tolm {

/// Cuts a text at any of a set of separator characters, one token per call. Without separators the whole text
/// is one token.
///
/// \code
/// Tolm::Tokenizer next(u","_s);
/// for (QString name = next(names); !name.isNull(); name = next(names)) { ... }
/// \endcode
class ZANPLATFORM_EXPORT Tokenizer {
public:
    explicit Tokenizer(QString separators);

    /// The next token of the text; a null string when there are no more. The empty text between two
    /// separators is an empty token that is not null, and so is an empty text. A call with another text than
    /// the call before, and the first call after the last token, begin at the front.
    QString operator()(const QString& text);

private:
    QString m_separators;
    QString m_text;
    qsizetype m_position = -1; // -1: the next call begins from the front
};

} // namespace Tolm
