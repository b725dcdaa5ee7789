#include "koRepathChoiceText.h"

#include <QDir>
#include <QFileInfo>

QString koRepathChoiceText::rule(const RepathChoice& choice)
{
    switch (choice.rule) {
    case RepathChoice::Rule::SingleFile:
        return tr("single file");
    case RepathChoice::Rule::LongestTail:
        return tr("longest tail of %n folder(s)", nullptr, choice.tailFolders);
    case RepathChoice::Rule::FirstMet:
        return tr("first of %n files met", nullptr, choice.candidates.size());
    case RepathChoice::Rule::NotFound:
        break;
    }
    return QStringLiteral("-");
}

QString koRepathChoiceText::ambiguity(const RepathLink& link, const RepathChoice& choice)
{
    const QString kind = link.kind == RepathTarget::Smart ? tr("smart") : tr("source");
    QStringList others;
    for (const QString& path : choice.otherCandidates())
        others.append(QDir::toNativeSeparators(path));
    // One arg() call, so that a '%' in a name or path is never read as a placeholder.
    return tr("%1 (%2 link): %3 files named %4 were found; repathed to %5 by %6. The others: %7")
        .arg(link.node.getName(), kind, QString::number(choice.candidates.size()), QFileInfo(link.oldPath).fileName(),
             QDir::toNativeSeparators(choice.path), rule(choice), others.join(QStringLiteral(", ")));
}
