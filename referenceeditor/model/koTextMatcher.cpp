#include "koTextMatcher.h"

#include <array>

namespace {

bool isAscii(const QString& text)
{
    for (const QChar character : text) {
        if (character.unicode() > 0x7f)
            return false;
    }
    return true;
}

// The characters beyond ASCII that fold to each ASCII character (the Kelvin sign to
// 'k', the long s to 's'); the expression matches them without case, so must we.
const QString& foldingToAscii(QChar ascii)
{
    static const std::array<QString, 0x80> forms = [] {
        std::array<QString, 0x80> result;
        for (uint code = 0x80; code <= 0xffff; ++code) {
            const QChar character{ushort(code)};
            const ushort folded = character.toCaseFolded().unicode();
            if (!character.isSurrogate() && folded < 0x80)
                result[folded].append(character);
        }
        return result;
    }();
    return forms[ascii.unicode()];
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
    if (m_expression.patternSyntax() == QRegExp::FixedString && m_expression.caseSensitivity() == Qt::CaseSensitive)
        return text.contains(m_expression.pattern());
    return m_expression.indexIn(text) >= 0;
}

bool koTextMatcher::containsPlain(const QString& text) const
{
    const int length = m_lower.size();
    const int last = text.size() - length;
    const QChar* characters = text.constData();
    for (int start = nextCandidate(text, 0); start >= 0 && start <= last; start = nextCandidate(text, start + 1)) {
        int matched = 1;
        while (matched < length && isSameLetter(characters[start + matched], matched))
            ++matched;
        if (matched == length)
            return true;
    }
    return false;
}

bool koTextMatcher::isSameLetter(QChar character, int at) const
{
    const QChar lower = m_lower.at(at);
    return character == lower || character == m_upper.at(at)
        || (character.unicode() > 0x7f && character.toCaseFolded() == lower);
}

int koTextMatcher::nextCandidate(const QString& text, int from) const
{
    // Looking for the first character is a vectorised scan; most texts have none.
    int first = text.indexOf(m_lower.at(0), from);
    if (m_upper.at(0) != m_lower.at(0))
        first = earlier(first, text.indexOf(m_upper.at(0), from));
    for (const QChar form : foldingToAscii(m_lower.at(0)))
        first = earlier(first, text.indexOf(form, from));
    return first;
}

int koTextMatcher::earlier(int one, int other)
{
    if (one < 0 || other < 0)
        return qMax(one, other);
    return qMin(one, other);
}
