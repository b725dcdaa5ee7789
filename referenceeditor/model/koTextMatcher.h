#pragma once

#include <QRegExp>
#include <QString>

// Finds a search expression in texts. A plain search, what users type, is matched
// without the regular expression engine: a search keystroke tests every row of the
// scene, several columns each.
class koTextMatcher
{
public:
    koTextMatcher() = default;
    explicit koTextMatcher(const QRegExp& expression);

    const QRegExp& expression() const { return m_expression; }
    bool isEmpty() const { return m_expression.isEmpty(); }
    bool matches(const QString& text) const;

private:
    bool containsPlain(const QString& text) const;
    bool isSameLetter(QChar character, int at) const;
    int nextCandidate(const QString& text, int from) const;
    // The smaller of two positions, -1 standing for none.
    static int earlier(int one, int other);

    mutable QRegExp m_expression;
    // For a plain ASCII search without case: the text's letters are compared with the
    // lower and the upper form of each character of the search, and with what folds to it.
    bool m_foldAscii = false;
    QString m_lower;
    QString m_upper;
};
