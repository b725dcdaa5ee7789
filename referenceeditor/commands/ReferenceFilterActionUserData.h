#pragma once

#include <QMetaType>
#include <QString>

// What a Filter-menu entry filters by: a filter key (ReferenceFilterFlag) and, for a
// file type, the entry's text.
struct ReferenceFilterActionUserData
{
    int code = 0;
    QString text;
};

Q_DECLARE_METATYPE(ReferenceFilterActionUserData)
