#pragma once

#include "koGlobal.h"
#include "koReferenceTypes.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QString>

// How the host and its plug-ins write file states and dates, in views, reports and dialogs.
class KOVIS_EXPORT koFileStateText
{
    Q_DECLARE_TR_FUNCTIONS(koFileStateText)
public:
    // "Up to date", "Out of date", "Missing", "Unsaved"; none for no file link.
    static QString state(koReferenceTypes::FileState state, const QString& none);
    static QString date(const QDateTime& date);
};
