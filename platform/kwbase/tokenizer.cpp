#include "kwbase/tokenizer.h"

#include <utility>

namespace Tolm {

Tokenizer::Tokenizer(QString separators)
    : m_separators(std::move(separators)) {}

QString Tokenizer::operator()(const QString& text) {
    // Callers mostly pass the same string object: comparing the texts each time would take longer than
    // cutting.
    if (m_position < 0 || !(text.isSharedWith(m_text) || text == m_text)) {
        m_text = text;
        m_position = 0;
    }
    if (m_position > m_text.size()) {
        m_position = -1;
        return {};
    }
    qsizetype end = m_position;
    while (end < m_text.size() && !m_separators.contains(m_text.at(end))) {
        ++end;
    }
    const QString token = m_text.sliced(m_position, end - m_position);
    m_position = end + 1;
    return token.isNull() ? QStringLiteral("") : token;
}

} // namespace Tolm
