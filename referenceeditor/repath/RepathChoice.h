#pragma once

#include <QString>
#include <QStringList>

// The file chosen for one link and why, so that a choice among several files of the same
// name can be shown to whoever has to trust it.
struct RepathChoice
{
    enum class Rule { NotFound, SingleFile, LongestTail, FirstMet };

    // Empty when nothing was found.
    QString path;
    Rule rule = Rule::NotFound;
    // LongestTail: how many trailing folders of the old path the chosen folder repeats.
    int tailFolders = 0;
    // All files of the name when there were several, the first one met first.
    QStringList candidates;

    bool isAmbiguous() const { return candidates.size() > 1; }
    QStringList otherCandidates() const
    {
        QStringList others = candidates;
        others.removeOne(path);
        return others;
    }
};
