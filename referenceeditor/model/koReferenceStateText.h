#pragma once

#include <kovis/koReferenceTypes.h>
#include <kovis/kodReferenceNode.h>

#include <QCoreApplication>
#include <QString>

// The colours in which the reference views show file states.
class koReferenceStateText
{
    Q_DECLARE_TR_FUNCTIONS(koReferenceStateText)
public:
    // The label in the colour of the state, as rich text, unless colours are off.
    static QString colored(const QString& label, koReferenceTypes::FileState state, const kodReferenceNode& node);

private:
    static bool coloringEnabled();
};
