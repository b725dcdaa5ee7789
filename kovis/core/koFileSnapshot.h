#pragma once

#include <QDateTime>
#include <QString>

// What the host knows of one file on disk; its dates are in UTC.
struct koFileSnapshot
{
    bool exists = false;
    QDateTime modified;
    QDateTime created;
    QString owner;

    bool operator==(const koFileSnapshot& other) const
    {
        return exists == other.exists && modified == other.modified && created == other.created
            && owner == other.owner;
    }
    bool operator!=(const koFileSnapshot& other) const { return !(*this == other); }
};
