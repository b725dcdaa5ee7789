#pragma once

#include "RepathChoice.h"
#include "RepathLink.h"

#include <QCoreApplication>

// How a repath choice reads for people, in the window's log and in kovis-host's plan.
class koRepathChoiceText
{
    Q_DECLARE_TR_FUNCTIONS(koRepathChoiceText)
public:
    // "single file", "longest tail of 2 folders", "first of 3 files met"; "-" when nothing was found.
    static QString rule(const RepathChoice& choice);
    // Which link went where among several files of its name, and which the others were.
    static QString ambiguity(const RepathLink& link, const RepathChoice& choice);
};
