#pragma once

#include <kovis/koReferenceTypes.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QString>

// How the host application writes file states and dates, in reports and dialogs.
class koFileStateText
{
    Q_DECLARE_TR_FUNCTIONS(koFileStateText)
public:
    // "Up to date", "Out of date", "Missing", "Unsaved"; none for no file link.
    static QString state(koReferenceTypes::FileState state, const QString& none);
    static QString date(const QDateTime& date);
};
