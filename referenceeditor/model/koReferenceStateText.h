#pragma once

#include <kovis/koReferenceTypes.h>
#include <kovis/kodReferenceNode.h>

#include <QCoreApplication>
#include <QString>

// The words and colours in which the reference views show file states.
class koReferenceStateText
{
    Q_DECLARE_TR_FUNCTIONS(koReferenceStateText)
public:
    // "Up to date", "Out of date", "Missing", "Unsaved"; empty for no file link.
    static QString statusWord(koReferenceTypes::FileState state);
    // The label in the colour of the state, as rich text, unless colours are off.
    static QString colored(const QString& label, koReferenceTypes::FileState state, const kodReferenceNode& node);
    // "yyyy.MM.dd hh:mm", or "----" for no date.
    static QString dateText(const QDateTime& date);

private:
    static bool coloringEnabled();
};
