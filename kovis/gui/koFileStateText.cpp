#include <kovis/koFileStateText.h>

QString koFileStateText::state(koReferenceTypes::FileState state, const QString& none)
{
    switch (state) {
    case koReferenceTypes::UpToDate:
        return tr("Up to date");
    case koReferenceTypes::OutOfDate:
        return tr("Out of date");
    case koReferenceTypes::Missing:
        return tr("Missing");
    case koReferenceTypes::Unsaved:
        return tr("Unsaved");
    case koReferenceTypes::NoFile:
        break;
    }
    return none;
}

QString koFileStateText::date(const QDateTime& date)
{
    return date.isValid() ? date.toString(QStringLiteral("yyyy.MM.dd hh:mm")) : QStringLiteral("----");
}
