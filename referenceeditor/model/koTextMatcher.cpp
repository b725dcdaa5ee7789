#include "koTextMatcher.h"

namespace {

bool isAscii(const QString& text)
{
    for (const QChar character : text) {
        if (character.unicode() > 0x7f)
            return false;
    }
    return true;
}

} // namespace

koTextMatcher::koTextMatcher(const QRegExp& expression)
    : m_expression(expression)
{
    const QString pattern = expression.pattern();
    m_foldAscii = expression.patternSyntax() == QRegExp::FixedString
        && expression.caseSensitivity() == Qt::CaseInsensitive && !pattern.isEmpty() && isAscii(pattern);
    if (m_foldAscii) {
        m_lower = pattern.toLower();
        m_upper = pattern.toUpper();
    }
}

bool koTextMatcher::matches(const QString& text) const
{
    if (m_foldAscii)
        return containsPlain(text);
    if (m_expression.patternSyntax() == QRegExp::FixedString)
        return text.contains(m_expression.pattern(), m_expression.caseSensitivity());
    return m_expression.indexIn(text) >= 0;
}

bool koTextMatcher::containsPlain(const QString& text) const
{
    const int length = m_lower.size();
    const int last = text.size() - length;
    const QChar* characters = text.constData();
    for (int start = nextCandidate(text, 0); start >= 0 && start <= last; start = nextCandidate(text, start + 1)) {
        int matched = 1;
        while (matched < length
               && (characters[start + matched] == m_lower.at(matched) || characters[start + matched] == m_upper.at(matched))) {
            ++matched;
        }
        if (matched == length)
            return true;
    }
    return false;
}

int koTextMatcher::nextCandidate(const QString& text, int from) const
{
    // Looking for the first character is a vectorised scan; most texts have none.
    const int lower = text.indexOf(m_lower.at(0), from);
    if (m_upper.at(0) == m_lower.at(0))
        return lower;
    const int upper = text.indexOf(m_upper.at(0), from);
    if (lower < 0 || upper < 0)
        return qMax(lower, upper);
    return qMin(lower, upper);
}
